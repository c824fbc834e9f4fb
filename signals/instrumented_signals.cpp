#include "signals/instrumented_signals.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "foundation/errors.h"
#include "foundation/rollback.h"
#include "signals/observed_indexes.h"

namespace ks_hmi {

namespace errors = plv_hmi_foundation::errors;
using ks_hmi_foundation::Rollback;

namespace {

std::ptrdiff_t offset(std::size_t index) { return static_cast<std::ptrdiff_t>(index); }

}  // namespace

InstrumentedSignals::InstrumentedSignals() : m_indexes(std::make_unique<Indexes>()) {}
InstrumentedSignals::~InstrumentedSignals() = default;

std::u16string InstrumentedSignals::getModelName() const { return m_modelName; }

void InstrumentedSignals::setModelName(const std::u16string& newName) {
    std::u16string name = newName;
    m_modelName.swap(name);
    // Kept: the index keeps its keys; who needs it under the new name calls `updateObservedPortMap`.
    for (const SignalPtr& signal : m_signals) signal->renameModel(name, m_modelName);
}

std::size_t InstrumentedSignals::getCount() const { return m_signals.size(); }

SignalSpecification* InstrumentedSignals::get(std::size_t index) const {
    errors::requirePosition(index, m_signals.size());
    return m_signals[index].get();
}

InstrumentedSignals::SignalPtr InstrumentedSignals::share(std::size_t index) const {
    errors::requirePosition(index, m_signals.size());
    return m_signals[index];
}

void InstrumentedSignals::add(SignalPtr spec) { insert(m_signals.size(), std::move(spec)); }

void InstrumentedSignals::insert(std::size_t index, SignalPtr spec) {
    errors::requireRecord(spec);
    // Kept: the end is a valid position here, unlike for the other operations.
    if (index > m_signals.size()) errors::raise(errors::InvalidElementIndex(static_cast<long>(m_signals.size())));
    m_signals.insert(m_signals.begin() + offset(index), spec);
    Rollback unlisted([&]() noexcept { m_signals.erase(m_signals.begin() + offset(index)); });
    enterIndex(spec, std::nullopt);
    unlisted.commit();
    m_indexes->forgetEnginePorts();
}

void InstrumentedSignals::set(std::size_t index, SignalPtr spec) {
    errors::requireRecord(spec);
    errors::requirePosition(index, m_signals.size());
    if (isChartworkDomain(spec->m_domainType)) {
        addToObservedPortMap(spec);
        removeFromObservedPortMap(m_signals[index]);
    } else {
        // With the room made first nothing can fail between taking the old entries out and putting the new ones in.
        m_indexes->ports.makeRoom();
        removeFromObservedPortMap(m_signals[index]);
        addToObservedPortMap(spec);
    }
    // Kept: a replaced chart signal keeps its entry in the chart index, unlike one that is removed.
    m_signals[index].swap(spec);
    m_indexes->forgetEnginePorts();
}

void InstrumentedSignals::remove(std::size_t index) {
    errors::requirePosition(index, m_signals.size());
    const SignalPtr signal = m_signals[index];
    leaveIndex(signal);
    m_signals.erase(m_signals.begin() + offset(index));
}

void InstrumentedSignals::leaveIndex(const SignalPtr& signal) {
    if (isChartworkDomain(signal->m_domainType)) {
        removeFromObservedCWObject(signal);
    } else {
        removeFromObservedPortMap(signal);
        m_indexes->forgetEnginePorts();
    }
}

void InstrumentedSignals::remove(const SignalSpecification& spec) {
    const auto match = std::find_if(m_signals.begin(), m_signals.end(),
                                    [&](const SignalPtr& signal) { return spec.isSameSignal(signal.get()); });
    if (match == m_signals.end()) return;
    const SignalPtr signal = *match;
    m_indexes->forgetEnginePorts();
    // Kept: the chart index is left alone, also for a chart signal, unlike by a removal by position.
    removeFromObservedPortMap(signal);
    m_signals.erase(match);
}

bool InstrumentedSignals::isEqual(const InstrumentedSignals* other) const {
    return other != nullptr &&
           std::equal(m_signals.begin(), m_signals.end(), other->m_signals.begin(), other->m_signals.end(),
                      [](const SignalPtr& a, const SignalPtr& b) { return a->isEqual(b.get()); });
}

void InstrumentedSignals::setRebindingPending(bool pending) { m_rebindingPending = pending; }

bool InstrumentedSignals::isRebindingPending() const { return m_rebindingPending; }

}  // namespace ks_hmi
