#include <span>

#include "foundation/host_call.h"
#include "foundation/host_value.h"
#include "foundation/native_object.h"
#include "foundation/record_sequence.h"
#include "foundation/rollback.h"
#include "signals/observed_indexes.h"

namespace ks_hmi {

using namespace ks_hmi_foundation;

namespace {

hos::InternedName className() {
    static const hos::InternedName name = hos::internal::makeInterned(InstrumentedSignals::kHostClass);
    return name;
}

}  // namespace

HvArrayPtr InstrumentedSignals::copy(bool excludeUnsaved) const {
    HvArrayPtr object = std::move(callHost<1>(kHostClass, {})[0]);
    auto& other = requireNativeObject<InstrumentedSignals>(object.get(), kHostClass);
    // Everything is copied aside, so that a failure leaves the other set as it was; the count is that of the start,
    // should the host hand this very set back.
    std::vector<SignalPtr> clones;
    for (const SignalPtr& signal : m_signals) {
        if (!excludeUnsaved || !signal->m_excludeForSave) clones.emplace_back(signal->clone());
    }
    std::u16string modelName = m_modelName;
    Indexes::Ports ports = m_indexes->ports;
    Indexes::ChartActivities activities = m_indexes->chartActivities;
    Indexes::ChartObjects chartObjects = m_indexes->chartObjects;

    other.m_signals.insert(other.m_signals.end(), clones.begin(), clones.end());
    other.m_modelName.swap(modelName);
    if (&other == this) return object;
    // Kept: the copied index refers to this set's records; `updateObservedPortMap` makes it follow the clones.
    std::swap(other.m_indexes->ports, ports);
    // Kept: without an observed activity neither chart container is copied, whatever the objects' entries are.
    if (!activities.empty()) {
        other.m_indexes->chartActivities.swap(activities);
        other.m_indexes->chartObjects.swap(chartObjects);
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
    return nativeObject<InstrumentedSignals>(object, className());
}

bool InstrumentedSignals::isValidType(const hvArray* value) { return isNoneOrOneOf(value, kHostClass); }

void InstrumentedSignals::applyRebindingRules(hvArray* object, bool flag) {
    if (object == nullptr) return;
    const hos::ObjectInterface held = heldObject(object);
    const Rollback settled([&held, name = className()]() noexcept {
        auto* const set = static_cast<InstrumentedSignals*>(hos::getNativeInstance(held, name));
        if (set != nullptr) set->m_rebindingPending = false;
    });
    const HvArrayPtr flagValue = makeLogical(flag);
    hvSetArrayScope(flagValue.get(), nullptr);
    tryCallHost<0>("applyRebindingRules", {object, flagValue.get()});
}

}  // namespace ks_hmi
