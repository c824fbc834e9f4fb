#include <utility>

#include "foundation/errors.h"
#include "foundation/rollback.h"
#include "foundation/text_hash.h"
#include "signals/instrumented_signals.h"

namespace ks_hmi {

namespace errors = plv_hmi_foundation::errors;
using ks_hmi_foundation::isSameText;
using ks_hmi_foundation::Rollback;
using ks_hmi_foundation::TextHash;

namespace {

std::uint64_t identity(const ksPort* port) { return reinterpret_cast<std::uintptr_t>(port); }

}  // namespace

// Equal for equal parts of the non-cached source key, which `SignalSpecification` gives to those who ask for it.
std::uint64_t InstrumentedSignals::pathKey(const std::u16string& blockPath, const std::u16string& subPath,
                                           int outputPortIndex, int logicalPortIndex) const {
    const int port = SignalSpecification::pathKeyPort(outputPortIndex, logicalPortIndex);
    return TextHash().add(m_modelName).add(blockPath).add(subPath).add(static_cast<std::uint32_t>(port)).value();
}

std::uint64_t InstrumentedSignals::pathKey(const SignalSpecification& spec) const {
    return pathKey(spec.m_blockPath, spec.m_subPath, spec.m_outputPortIndex, spec.m_logicalPortIndex);
}

void InstrumentedSignals::ObservedPortMap::enter(std::uint64_t pathKey, const SignalPtr& spec) {
    byPath.insert(pathKey, spec);
    if (spec->m_cachedPortIdx != 0) byHandle.insert({spec->m_cachedBlockHandle, spec->m_cachedPortIdx}, spec);
}

void InstrumentedSignals::forgetKSPorts() noexcept {
    // Clearing walks the whole table, so an empty one is left alone.
    if (!m_cachedKSPorts.empty()) m_cachedKSPorts.clear();
}

void InstrumentedSignals::addToObservedPortMap(const SignalPtr& spec) {
    errors::requireRecord(spec);
    if (isChartworkDomain(spec->m_domainType)) {
        addToObservedCWObjectCache(spec);
        return;
    }
    // Kept: no look for an earlier entry; a signal entered twice is there twice.
    m_observedPortMap.makeRoom();
    m_observedPortMap.enter(pathKey(*spec), spec);
    forgetKSPorts();
}

void InstrumentedSignals::removeFromObservedPortMap(const SignalPtr& spec) {
    errors::requireRecord(spec);
    const SignalPtr removed = spec;
    if (isChartworkDomain(removed->m_domainType)) return;
    // Kept: by port and not by record; all signals on the block's port leave the index together.
    std::size_t erased = m_observedPortMap.byPath.eraseIf(pathKey(*removed), [&](const SignalSpecification& entry) {
        return entry.m_outputPortIndex == removed->m_outputPortIndex &&
               isSameText(entry.m_blockPath, removed->m_blockPath);
    });
    erased += m_observedPortMap.byHandle.eraseIf({removed->m_cachedBlockHandle, removed->m_cachedPortIdx},
                                                 [&](const SignalSpecification& entry) {
                                                     return entry.m_cachedPortIdx == removed->m_cachedPortIdx &&
                                                            entry.m_cachedBlockHandle == removed->m_cachedBlockHandle;
                                                 });
    if (erased != 0) forgetKSPorts();
}

void InstrumentedSignals::updateObservedPortMap() {
    ObservedPortMap rebuilt;
    for (const SignalPtr& signal : m_signals) {
        if (isChartworkDomain(signal->m_domainType)) {
            addToObservedCWObjectCache(signal);
        } else {
            rebuilt.makeRoom();
            rebuilt.enter(pathKey(*signal), signal);
        }
    }
    std::swap(m_observedPortMap, rebuilt);
    // Kept: a rebuild that enters no port keeps the cache of engine ports; only entering one empties it.
    if (isAnyPortObserved()) forgetKSPorts();
}

bool InstrumentedSignals::isAnyPortObserved() const {
    return !m_observedPortMap.byPath.isEmpty() || !m_observedPortMap.byHandle.isEmpty();
}

void InstrumentedSignals::cacheKSPorts(const std::vector<ksPort*>& ports) {
    EnginePorts cached(ports.size());
    for (const ksPort* const port : ports) cached.insert(identity(port));
    m_cachedKSPorts.swap(cached);
}

bool InstrumentedSignals::isKSPortObserved(const ksPort* port) const {
    return m_cachedKSPorts.contains(identity(port));
}

bool InstrumentedSignals::isPortObserved(double blockHandle, int portIdx) const {
    return m_observedPortMap.byHandle.find({blockHandle, portIdx}, [&](const SignalSpecification& entry) {
        return entry.m_cachedPortIdx == portIdx && entry.m_cachedBlockHandle == blockHandle;
    }) != nullptr;
}

bool InstrumentedSignals::isPortObserved(double blockHandle, const std::u16string& blockPath,
                                         const std::u16string& subPath, int outputPortIndex, int portIdx,
                                         int logicalPortIndex) {
    if (isPortObserved(blockHandle, portIdx)) return true;
    const auto observes = [&](const SignalSpecification& entry) {
        if (entry.m_outputPortIndex != outputPortIndex || !isSameText(entry.m_blockPath, blockPath)) return false;
        const bool isUnresolved = entry.m_cachedPortIdx == 0;
        return portIdx == 0 || isUnresolved || (m_rebindingPending && entry.m_cachedPortIdx == portIdx);
    };
    const SignalPtr* const found =
        m_observedPortMap.byPath.find(pathKey(blockPath, subPath, outputPortIndex, logicalPortIndex), observes);
    if (found == nullptr) return false;
    if (portIdx == 0 || (*found)->m_cachedPortIdx != 0) return true;
    const SignalPtr signal = *found;
    Rollback unresolved(
        [&signal, earlier = signal->m_cachedBlockHandle]() noexcept { signal->setCachedInfo(earlier, 0); });
    signal->setCachedInfo(blockHandle, portIdx);
    // Kept: entered once more under its path key; no query minds, and the handle key joins.
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
