#include <unordered_set>

#include "foundation/model_path.h"
#include "signals/instrumented_signals.h"

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
    std::unordered_set<const SignalSpecification*> renumbered;
    for (std::size_t i = 0; i < m_signals.size(); ++i) {
        const SignalPtr signal = m_signals[i];
        // Ports below 1 wrap round to positions beyond every list.
        const auto port = static_cast<std::size_t>(signal->m_outputPortIndex) - 1;
        if (!belongsToBlock(*signal) || port >= newNumbers.size() || renumbered.contains(signal.get())) continue;
        const int newNumber = newNumbers[port];
        if (newNumber == 0) {
            deleted.push_back(i);
        } else if (newNumber != signal->m_outputPortIndex) {
            renumbered.insert(signal.get());
            removeFromObservedPortMap(signal);
            signal->renumberPortIndex(newNumber);
            addToObservedPortMap(signal);
        }
    }
    for (auto position = deleted.rbegin(); position != deleted.rend(); ++position) remove(*position);
    if (deleted.empty() && renumbered.empty()) return;
    m_cachedKSPorts.clear();
    updateObservedPortMap();
}

}  // namespace ks_hmi
