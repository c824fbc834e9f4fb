#include "observers/hmi_engine_utils.h"

#include <exception>

#include "foundation/host_call.h"
#include "foundation/host_value.h"

namespace ks_hmi {

using namespace ks_hmi_foundation;

namespace {

HvArrayPtr makeTextOrEmpty(std::u16string_view text) {
    try {
        if (HvArrayPtr value = makeText(text)) return value;
    } catch (const std::exception&) {
        // A 0x0 double stands for the text.
    }
    return makeEmpty();
}

void sendBlockParamChange(std::u16string_view blockPath) {
    const HvArrayPtr event = makeTextOrEmpty(u"block_param_change");
    const HvArrayPtr block = makeTextOrEmpty(blockPath);
    tryCallHostSilently<0>("Kestrel.HMI.kshmi", {event.get(), block.get()});
}

void discardCaughtException() noexcept {
    try {
        kssvDiscardDiagnostic(kssvCreateDiagnosticFromCatchClause());
    } catch (...) {
        // Not even the diagnostic could be made; nothing is left to discard.
    }
}

}  // namespace

// Kept: silent, whatever fails; a parameter change must not depend on dashboards being there.
void HMIEngineUtils::updateParamsForBlock(const std::u16string& blockPath) noexcept {
    try {
        sendBlockParamChange(blockPath);
    } catch (...) {
        discardCaughtException();
    }
}

}  // namespace ks_hmi
