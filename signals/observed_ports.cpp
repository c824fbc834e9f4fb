#include <bit>
#include <cstdint>
#include <limits>
#include <utility>

#include "foundation/errors.h"
#include "foundation/rollback.h"
#include "foundation/text_hash.h"
#include "signals/observed_indexes.h"

namespace ks_hmi {

namespace errors = plv_hmi_foundation::errors;
using ks_hmi_foundation::isSameText;
using ks_hmi_foundation::Rollback;

namespace {

// A handle of NaN is no question's.
const struct Nobody : SignalSpecification {
    Nobody() { m_cachedBlockHandle = std::numeric_limits<double>::quiet_NaN(); }
} kNobody;

bool isOn(const SignalSpecification& signal, double blockHandle, int portIdx) noexcept {
    const auto isPort = static_cast<unsigned>(signal.m_cachedPortIdx == portIdx);
    return (isPort & static_cast<unsigned>(signal.m_cachedBlockHandle == blockHandle)) != 0;
}

const SignalSpecification& signalOrNobody(std::uintptr_t address) noexcept {
    const auto nobody = std::bit_cast<std::uintptr_t>(static_cast<const SignalSpecification*>(&kNobody));
    const std::uintptr_t isNobody = std::uintptr_t{0} - static_cast<std::uintptr_t>(address == 0);
    return *std::bit_cast<const SignalSpecification*>(address | (isNobody & nobody));
}

}  // namespace

void InstrumentedSignals::addToObservedPortMap(const SignalPtr& spec) {
    errors::requireRecord(spec);
    if (enterIndex(spec, std::nullopt)) m_indexes->forgetEnginePorts();
}

bool InstrumentedSignals::enterIndex(const SignalPtr& spec, std::optional<std::uint64_t> knownPathKey) {
    if (isChartworkDomain(spec->m_domainType)) {
        addToObservedCWObjectCache(spec);
        return false;
    }
    // Kept: no look for an earlier entry; a signal entered twice is there twice.
    const std::uint64_t pathKey = knownPathKey ? *knownPathKey : Indexes::pathKey(m_modelName, *spec);
    m_indexes->ports.makeRoom();
    m_indexes->ports.enter(pathKey, spec);
    return true;
}

void InstrumentedSignals::removeFromObservedPortMap(const SignalPtr& spec) {
    errors::requireRecord(spec);
    const SignalPtr removed = spec;
    if (isChartworkDomain(removed->m_domainType)) return;
    // Kept: by port and not by record; all signals on the block's port leave the index together.
    Indexes::Ports& ports = m_indexes->ports;
    std::size_t erased =
        ports.byPath.eraseIf(Indexes::pathKey(m_modelName, *removed), [&](const SignalSpecification& entry) {
            return entry.m_outputPortIndex == removed->m_outputPortIndex &&
                   isSameText(entry.m_blockPath, removed->m_blockPath);
        });
    erased += ports.eraseByHandle(Indexes::handleKeyOf(*removed), [&](const SignalSpecification& entry) {
        return entry.m_cachedPortIdx == removed->m_cachedPortIdx &&
               entry.m_cachedBlockHandle == removed->m_cachedBlockHandle;
    });
    if (erased != 0) m_indexes->forgetEnginePorts();
}

void InstrumentedSignals::updateObservedPortMap() {
    Indexes::Ports rebuilt;
    for (const SignalPtr& signal : m_signals) {
        if (isChartworkDomain(signal->m_domainType)) {
            addToObservedCWObjectCache(signal);
        } else {
            rebuilt.makeRoom();
            rebuilt.enter(Indexes::pathKey(m_modelName, *signal), signal);
        }
    }
    std::swap(m_indexes->ports, rebuilt);
    // Kept: a rebuild that enters no port keeps the cache of engine ports; only entering one empties it.
    if (isAnyPortObserved()) m_indexes->forgetEnginePorts();
}

bool InstrumentedSignals::isAnyPortObserved() const { return !m_indexes->ports.isEmpty(); }

void InstrumentedSignals::cacheKSPorts(const std::vector<ksPort*>& ports) {
    m_indexes->enginePorts = AddressSet(ports);
}

bool InstrumentedSignals::isKSPortObserved(const ksPort* port) const { return m_indexes->enginePorts.contains(port); }

bool InstrumentedSignals::isPortObserved(double blockHandle, int portIdx) const {
    const Indexes::Ports& ports = m_indexes->ports;
    const std::uint64_t key = handleKey(blockHandle, portIdx);
    if (ports.near.isInUse()) {
        const auto [address, isPassed] = ports.near.find(key);
        const bool isIt = isOn(signalOrNobody(address), blockHandle, portIdx);
        // Without a branch up to here, and this one is hardly ever taken.
        const std::uint64_t isOpen = (address | isPassed) & (std::uint64_t{isIt} - 1);
        if (isOpen == 0) [[likely]]
            return isIt;
    }
    // By value: what the match needs stays in registers.
    return ports.byHandle.contains(key,
                                   [=](const SignalSpecification& entry) { return isOn(entry, blockHandle, portIdx); });
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
    const std::uint64_t pathKey = Indexes::pathKey(m_modelName, blockPath, subPath, outputPortIndex, logicalPortIndex);
    const SignalPtr* const found = m_indexes->ports.byPath.find(pathKey, observes);
    if (found == nullptr) return false;
    if (portIdx == 0 || (*found)->m_cachedPortIdx != 0) return true;
    const bool isItsKey = isSameText((*found)->m_subPath, subPath) && (*found)->m_logicalPortIndex == logicalPortIndex;
    resolve(*found, blockHandle, portIdx, isItsKey ? std::optional(pathKey) : std::nullopt);
    return true;
}

// Kept: entered once more under its path key; no query minds, and the handle key joins.
void InstrumentedSignals::resolve(SignalPtr signal, double blockHandle, int portIdx,
                                  std::optional<std::uint64_t> pathKey) {
    Rollback unresolved(
        [&signal, earlier = signal->m_cachedBlockHandle]() noexcept { signal->setCachedInfo(earlier, 0); });
    signal->setCachedInfo(blockHandle, portIdx);
    if (enterIndex(signal, pathKey)) m_indexes->forgetEnginePorts();
    unresolved.commit();
}

bool InstrumentedSignals::isPortObserved(SignalSpecification* spec) {
    if (spec == nullptr) return false;
    return isPortObserved(spec->m_cachedBlockHandle, spec->m_blockPath, spec->m_subPath, spec->m_outputPortIndex,
                          spec->m_cachedPortIdx, spec->m_logicalPortIndex);
}

}  // namespace ks_hmi
