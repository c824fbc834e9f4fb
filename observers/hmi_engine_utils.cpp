#include "observers/hmi_engine_utils.h"

#include <exception>

#include "foundation/host_value.h"
#include "host/services.h"

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
    const hvArray* const inputs[] = {event.get(), block.get()};
    kssvDiagnosticImpl* const refusal = kssvFEVAL_NoThrow(0, nullptr, 2, inputs, "Kestrel.HMI.kshmi", true, nullptr);
    if (refusal != nullptr) kssvDiscardDiagnostic(refusal);
}

void discardCaughtException() noexcept {
    try {
        kssvDiscardDiagnostic(kssvCreateDiagnosticFromCatchClause());
    } catch (...) {
        // Not even the diagnostic could be made; nothing is left to discard.
    }
}

}  // namespace

void HMIEngineUtils::updateParamsForBlock(const std::u16string& blockPath) noexcept {
    try {
        sendBlockParamChange(blockPath);
    } catch (...) {
        discardCaughtException();
    }
}

}  // namespace ks_hmi
