#include "fuzz/fuzz_host.h"

#include <cstdio>
#include <cstdlib>
#include <string>

#include "memory_host/kestrel/host_side.h"
#include "memory_host/orvex/account/ledger.h"
#include "memory_host/orvex/calls/library_loader.h"
#include "memory_host/orvex/calls/warnings.h"
#include "signals/signal_specification.h"

namespace ks_fuzz {

void enterHost() {
    static const orvex::LoadedLibrary library(KS_HMI_LIBRARY_NAME);
    kestrel::installHostSide();
}

void fail(const char* what) {
    std::fprintf(stderr, "fuzz: %s\n", what);
    std::abort();
}

void requireNothingLives() {
    kestrel::releaseHostSide();
    orvex::clearWarnings();
    ks_hmi::SignalSpecification::getBlockUUIDmap().clear();
    if (orvex::liveCounts() == orvex::LedgerCounts{}) return;
    fail(("something still lives:\n" + orvex::describeLive()).c_str());
}

}  // namespace ks_fuzz
