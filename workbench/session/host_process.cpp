#include "workbench/session/host_process.h"

#include <optional>
#include <utility>

#include "host/object_system.h"
#include "memory_host/kestrel/host_side.h"
#include "memory_host/orvex/account/ledger.h"
#include "memory_host/orvex/account/scope_errors.h"
#include "memory_host/orvex/calls/errors.h"
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
std::string whatIsAmiss() { return {}; }
#else
std::string whatIsAmiss() {
    std::string text = orvex::liveCounts() == orvex::LedgerCounts{} ? "" : orvex::describeLive();
    for (const std::string& error : orvex::scopeErrors()) text += error + '\n';
    return text;
}
#endif

constinit bool g_leavesSignals = false;

}  // namespace

const char* const kLibrary = KS_HMI_LIBRARY_NAME;

void enterHost(WarningSink warnings) {
    if (library() && !library()->isLoaded())
        orvex::raise("HostLeft",
                     "The host was left, and the library registers its classes once per process. Leave the "
                     "host at the end only, or start another process.");
    orvex::setWarningSink([warnings = std::move(warnings)](const orvex::Warning& warning) {
        if (warnings) warnings(printableMessage(warning.text));
    });
    if (library()) return;
    kestrel::installHostSide();
    library().emplace(kLibrary);
}

void leaveSignalsToProcess() noexcept { g_leavesSignals = true; }

void leaveSignals(const hvArray* set) noexcept {
    // Never released with the process.
    static auto& left = *new hos::ObjectInterface;
    if (g_leavesSignals) left = omGetArrayElement(set, 0);
}

std::string leaveHost() {
    orvex::setWarningSink({});
    if (!library()) return {};
    kestrel::releaseHostSide();
    orvex::releaseObjectSystem();
    library()->unload();
    return whatIsAmiss();
}

}  // namespace workbench
