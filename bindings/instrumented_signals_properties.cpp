#include "bindings/instrumented_signals_properties.h"

#include "signals/instrumented_signals.h"

namespace ks_hmi_foundation {

using ks_hmi::InstrumentedSignals;

namespace {

const InstrumentedSignals& set(const void* instance) { return *static_cast<const InstrumentedSignals*>(instance); }

}  // namespace

void SignalsModelPI::getValue(const void* instance, hos::PropValue& value) const {
    value.text = set(instance).getModelName();
}

void SignalsCountPI::getValue(const void* instance, hos::PropValue& value) const {
    value.number = static_cast<double>(set(instance).getCount());
}

void SignalsPersistencePI::getValue(const void* instance, hos::PropValue& value) const {
    value.array = set(instance).getPersistenceData().release();
}

void SignalsPersistencePI::setValue(void* instance, const hos::PropValue& value) const {
    static_cast<InstrumentedSignals*>(instance)->setFromPersistenceData(value.array);
}

}  // namespace ks_hmi_foundation
