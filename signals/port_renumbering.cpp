#include "foundation/model_path.h"
#include "foundation/rollback.h"
#include "signals/observed_indexes.h"

namespace ks_hmi {

using namespace ks_hmi_foundation;

void InstrumentedSignals::renumberPorts(double blockHandle, const std::u16string& blockPath, const std::string& eid,
                                        std::vector<int> newNumbers) {
    const std::u16string path = RemoveModelFromPath(blockPath, m_modelName);
    const std::string shortEid = RemoveModelFromEID(eid, m_modelName);
    const auto belongsToBlock = [&](const SignalSpecification& signal) {
        return signal.m_cachedBlockHandle == blockHandle || signal.m_blockPath == path || signal.m_eid == shortEid;
    };

    std::vector<std::size_t> deleted;
    bool isAnyMoved = false;
    // One after the other: a record that is listed twice is renumbered at each of its places.
    for (std::size_t i = 0; i < m_signals.size(); ++i) {
        SignalSpecification& signal = *m_signals[i];
        // Ports below 1 wrap round to positions beyond every list.
        const auto entry = static_cast<std::size_t>(signal.m_outputPortIndex) - 1;
        if (!belongsToBlock(signal) || entry >= newNumbers.size()) continue;
        if (newNumbers[entry] == 0) {
            deleted.push_back(i);
        } else if (newNumbers[entry] != signal.m_outputPortIndex) {
            signal.renumberPortIndex(newNumbers[entry]);
            isAnyMoved = true;
        }
    }
    if (deleted.empty() && !isAnyMoved) return;

    removeAll(deleted);
    m_indexes->forgetEnginePorts();
    updateObservedPortMap();
}

void InstrumentedSignals::removeAll(const std::vector<std::size_t>& positions) {
    // The list closes up once, also when a signal cannot leave its index: those removed before it stay removed.
    const Rollback closedUp([&]() noexcept { std::erase(m_signals, nullptr); });
    for (auto position = positions.rbegin(); position != positions.rend(); ++position) {
        leaveIndex(m_signals[*position]);
        m_signals[*position].reset();
    }
}

}  // namespace ks_hmi
