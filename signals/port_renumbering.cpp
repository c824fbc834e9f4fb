#include "foundation/model_path.h"
#include "foundation/rollback.h"
#include "signals/instrumented_signals.h"

namespace ks_hmi {

using namespace ks_hmi_foundation;

namespace {

/// A record listed twice is renumbered once: both entries set the same number.
struct Renumbering {
    InstrumentedSignals::SignalPtr signal;
    int newNumber;
    int oldNumber;
    int oldCachedPort;

    void undo() const noexcept {
        signal->m_outputPortIndex = oldNumber;
        signal->m_cachedPortIdx = oldCachedPort;
    }
};

}  // namespace

void InstrumentedSignals::renumberPorts(double blockHandle, const std::u16string& blockPath, const std::string& eid,
                                        std::vector<int> newNumbers) {
    const std::u16string path = RemoveModelFromPath(blockPath, m_modelName);
    const std::string shortEid = RemoveModelFromEID(eid, m_modelName);
    const auto belongsToBlock = [&](const SignalSpecification& signal) {
        return signal.m_cachedBlockHandle == blockHandle || signal.m_blockPath == path || signal.m_eid == shortEid;
    };

    std::vector<SignalPtr> remaining;
    std::vector<SignalPtr> deleted;
    std::vector<Renumbering> moved;
    for (const SignalPtr& signal : m_signals) {
        const int port = signal->m_outputPortIndex;
        // Ports below 1 wrap round to positions beyond every list.
        const auto entry = static_cast<std::size_t>(port) - 1;
        const int newNumber = belongsToBlock(*signal) && entry < newNumbers.size() ? newNumbers[entry] : port;
        (newNumber == 0 && port != 0 ? deleted : remaining).push_back(signal);
        if (newNumber != 0 && newNumber != port) moved.push_back({signal, newNumber, port, signal->m_cachedPortIdx});
    }
    if (deleted.empty() && moved.empty()) return;

    // The index is rebuilt below, so only the chart index needs to be told of each deleted signal.
    for (auto signal = deleted.rbegin(); signal != deleted.rend(); ++signal) {
        if (isChartworkDomain((*signal)->m_domainType)) removeFromObservedCWObject(*signal);
    }
    for (const Renumbering& move : moved) move.signal->renumberPortIndex(move.newNumber);
    m_signals.swap(remaining);
    Rollback renumbered([&]() noexcept {
        m_signals.swap(remaining);
        for (const Renumbering& move : moved) move.undo();
    });
    updateObservedPortMap();
    renumbered.commit();
    forgetKSPorts();
}

}  // namespace ks_hmi
