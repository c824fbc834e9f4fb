#include "workbench/session/host_process.h"

#include <optional>

#include "memory_host/kestrel/host_side.h"
#include "memory_host/orvex/account/ledger.h"
#include "memory_host/orvex/calls/library_loader.h"
#include "memory_host/orvex/calls/warnings.h"
#include "memory_host/orvex/objects/object_system.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

std::optional<orvex::LoadedLibrary>& library() {
    static std::optional<orvex::LoadedLibrary> library;
    return library;
}

#ifdef NDEBUG
bool nothingLives(std::ostream&) { return true; }
#else
bool nothingLives(std::ostream& err) {
    if (orvex::liveCounts() == orvex::LedgerCounts{}) return true;
    err << "kshmi: not everything was released:\n" << orvex::describeLive();
    return false;
}
#endif

}  // namespace

void enterHost(std::ostream& warnings) {
    orvex::setWarningSink(
        [&warnings](const orvex::Warning& warning) { warnings << "warning: " << printable(warning.text) << '\n'; });
    if (library()) return;
    kestrel::installHostSide();
    library().emplace(kLibrary);
}

bool leaveHost(std::ostream& err) {
    orvex::setWarningSink({});
    if (!library()) return true;
    kestrel::releaseHostSide();
    orvex::releaseObjectSystem();
    library()->unload();
    return nothingLives(err);
}

}  // namespace workbench
