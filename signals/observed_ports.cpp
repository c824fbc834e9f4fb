#include <utility>

#include "foundation/rollback.h"
#include "signals/instrumented_signals.h"

namespace ks_hmi {

using ks_hmi_foundation::Rollback;

namespace {

std::uint64_t identity(const ksPort* port) { return reinterpret_cast<std::uintptr_t>(port); }

}  // namespace

void InstrumentedSignals::addToObservedPortMap(const SignalPtr& spec) {
    if (isChartworkDomain(spec->m_domainType)) {
        addToObservedCWObjectCache(spec);
        return;
    }
    // No look for an earlier entry, on purpose: a signal entered twice is there twice.
    const std::uint64_t pathKey = spec->getSourceKeyNonCached(m_modelName);
    const std::uint64_t handleKey = spec->m_cachedPortIdx != 0 ? spec->getSourceKeyCached() : 0;
    if (pathKey == 0 && handleKey == 0) return;
    m_cachedKSPorts.clear();
    if (pathKey != 0) m_observedPortMap.insert(pathKey, spec);
    Rollback pathEntry([&]() noexcept {
        if (pathKey != 0) m_observedPortMap.eraseNewest(pathKey);
    });
    if (handleKey != 0) m_observedPortMap.insert(handleKey, spec);
    pathEntry.commit();
}

void InstrumentedSignals::removeFromObservedPortMap(const SignalPtr& spec) {
    const SignalPtr removed = spec;
    if (isChartworkDomain(removed->m_domainType)) return;
    // By port and not by record, on purpose: all signals on the block's port leave the index together.
    std::size_t erased =
        m_observedPortMap.eraseIf(removed->getSourceKeyNonCached(m_modelName), [&](const SignalSpecification& entry) {
            return entry.m_outputPortIndex == removed->m_outputPortIndex && entry.m_blockPath == removed->m_blockPath;
        });
    erased += m_observedPortMap.eraseIf(removed->getSourceKeyCached(), [&](const SignalSpecification& entry) {
        return entry.m_cachedPortIdx == removed->m_cachedPortIdx &&
               entry.m_cachedBlockHandle == removed->m_cachedBlockHandle;
    });
    if (erased != 0) m_cachedKSPorts.clear();
}

void InstrumentedSignals::updateObservedPortMap() {
    SourceKeyIndex old;
    std::swap(old, m_observedPortMap);
    Rollback rebuilding([&]() noexcept { std::swap(old, m_observedPortMap); });
    for (const SignalPtr& signal : m_signals) addToObservedPortMap(signal);
    rebuilding.commit();
}

bool InstrumentedSignals::isAnyPortObserved() const { return !m_observedPortMap.isEmpty(); }

void InstrumentedSignals::cacheKSPorts(const std::vector<ksPort*>& ports) {
    m_cachedKSPorts.clear();
    for (const ksPort* const port : ports) m_cachedKSPorts.insert(identity(port));
}

bool InstrumentedSignals::isKSPortObserved(const ksPort* port) const {
    return m_cachedKSPorts.contains(identity(port));
}

bool InstrumentedSignals::isPortObserved(double blockHandle, int portIdx) const {
    const std::uint64_t key = SignalSpecification::getCachedInfoHash(blockHandle, portIdx);
    return m_observedPortMap.find(key, [&](const SignalSpecification& entry) {
        return entry.m_cachedPortIdx == portIdx && entry.m_cachedBlockHandle == blockHandle;
    }) != nullptr;
}

bool InstrumentedSignals::isPortObserved(double blockHandle, const std::u16string& blockPath,
                                         const std::u16string& subPath, int outputPortIndex, int portIdx,
                                         int logicalPortIndex) {
    if (isPortObserved(blockHandle, portIdx)) return true;
    const std::uint64_t key =
        SignalSpecification::getNonCachedInfoHash(blockPath, subPath, outputPortIndex, logicalPortIndex, m_modelName);
    const auto observes = [&](const SignalSpecification& entry) {
        if (entry.m_outputPortIndex != outputPortIndex || entry.m_blockPath != blockPath) return false;
        const bool isUnresolved = entry.m_cachedPortIdx == 0;
        return portIdx == 0 || isUnresolved || (m_rebindingPending && entry.m_cachedPortIdx == portIdx);
    };
    const SignalPtr* const found = m_observedPortMap.find(key, observes);
    if (found == nullptr) return false;
    if (portIdx == 0 || (*found)->m_cachedPortIdx != 0) return true;
    const SignalPtr signal = *found;
    const double oldHandle = signal->m_cachedBlockHandle;
    signal->setCachedInfo(blockHandle, portIdx);
    Rollback unresolved([&]() noexcept { signal->setCachedInfo(oldHandle, 0); });
    // Entered once more under its path key on purpose: no query minds, and the handle key joins.
    addToObservedPortMap(signal);
    unresolved.commit();
    return true;
}

bool InstrumentedSignals::isPortObserved(SignalSpecification* spec) {
    if (spec == nullptr) return false;
    return isPortObserved(spec->m_cachedBlockHandle, spec->m_blockPath, spec->m_subPath, spec->m_outputPortIndex,
                          spec->m_cachedPortIdx, spec->m_logicalPortIndex);
}

}  // namespace ks_hmi
