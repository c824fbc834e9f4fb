#include "workbench/session/host_process.h"

#include <optional>
#include <utility>

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
std::string whatLives() { return {}; }
#else
std::string whatLives() { return orvex::liveCounts() == orvex::LedgerCounts{} ? "" : orvex::describeLive(); }
#endif

}  // namespace

void enterHost(WarningSink warnings) {
    orvex::setWarningSink([warnings = std::move(warnings)](const orvex::Warning& warning) {
        if (warnings) warnings(printableMessage(warning.text));
    });
    if (library()) return;
    kestrel::installHostSide();
    library().emplace(kLibrary);
}

std::string leaveHost() {
    orvex::setWarningSink({});
    if (!library()) return {};
    kestrel::releaseHostSide();
    orvex::releaseObjectSystem();
    library()->unload();
    return whatLives();
}

}  // namespace workbench
