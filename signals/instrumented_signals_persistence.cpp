#include <span>

#include "foundation/host_call.h"
#include "foundation/host_value.h"
#include "foundation/native_object.h"
#include "foundation/record_sequence.h"
#include "foundation/rollback.h"
#include "signals/instrumented_signals.h"

namespace ks_hmi {

using namespace ks_hmi_foundation;

namespace {

constexpr const char* kInstrumentedSignalsClass = "Kestrel.HMI.InstrumentedSignals";

}  // namespace

HvArrayPtr InstrumentedSignals::copy(bool excludeUnsaved) const {
    HvArrayPtr object = std::move(callHost<1>(kInstrumentedSignalsClass, {})[0]);
    auto& other = requireNativeObject<InstrumentedSignals>(object.get(), kInstrumentedSignalsClass);
    other.m_modelName = m_modelName;
    // Bounded by the count at the start: should the host hand this very set back, the clones are not cloned again.
    const std::size_t count = m_signals.size();
    for (std::size_t i = 0; i < count; ++i) {
        const SignalPtr signal = m_signals[i];
        if (excludeUnsaved && signal->m_excludeForSave) continue;
        other.m_signals.push_back(SignalPtr(signal->clone()));
    }
    if (&other == this) return object;
    // The copied index refers to this set's records on purpose; `updateObservedPortMap` makes it follow the clones.
    other.m_observedPortMap = m_observedPortMap;
    if (!m_observedCWActivity.empty()) {
        other.m_observedCWActivity = m_observedCWActivity;
        other.m_observedCWObjectCache = m_observedCWObjectCache;
    }
    return object;
}

HvArrayPtr InstrumentedSignals::getPersistenceData() const {
    static const char* const* const fields = SignalSpecification::getStructFields();
    static const int fieldCount = SignalSpecification::getNumStructFields(false);
    // The host aligns paths with scripts, which may change this set: a snapshot of the records is written.
    const std::vector<SignalPtr> signals = m_signals;
    const std::u16string modelName = m_modelName;
    return persistRecords(signals, std::span(fields, static_cast<std::size_t>(fieldCount)),
                          [&](const SignalSpecification& signal, hvArray* s, std::size_t i) {
                              signal.getPersistenceData(s, i, modelName);
                          });
}

void InstrumentedSignals::setFromPersistenceData(const hvArray* data) {
    appendRecords<SignalSpecification>(data, [this](SignalPtr signal) { add(std::move(signal)); });
}

InstrumentedSignals* InstrumentedSignals::getFromHvArray(const hvArray* object) {
    return nativeObject<InstrumentedSignals>(object, kInstrumentedSignalsClass);
}

bool InstrumentedSignals::isValidType(const hvArray* value) { return isNoneOrOneOf(value, kInstrumentedSignalsClass); }

void InstrumentedSignals::applyRebindingRules(hvArray* object, bool flag) {
    if (object == nullptr) return;
    Rollback settled([&]() noexcept {
        if (InstrumentedSignals* const set = getFromHvArray(object)) set->m_rebindingPending = false;
    });
    const HvArrayPtr flagValue = makeLogical(flag);
    hvSetArrayScope(flagValue.get(), nullptr);
    tryCallHost<0>("applyRebindingRules", {object, flagValue.get()});
}

}  // namespace ks_hmi
