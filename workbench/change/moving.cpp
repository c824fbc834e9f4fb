#include "workbench/change/moving.h"

#include <utility>
#include <vector>

#include "signals/signal_specification.h"
#include "workbench/change/observing.h"
#include "workbench/session/signal_source.h"

namespace workbench {

namespace {

using kestrel::Block;

std::vector<const Block*> blocksOfSignals(const Session& session) {
    std::vector<const Block*> blocks;
    for (std::size_t i = 0; i < session.signals().getCount(); ++i)
        blocks.push_back(blockOf(session.model(), *session.signals().get(i)));
    return blocks;
}

/// The signals take over the paths of their blocks, in the same order; null: gone. A subsystem path may also lead to a
/// parent farther up.
void follow(const Session& session, const std::vector<const Block*>& blocks, const std::u16string& oldPath,
            const std::u16string& newPath) {
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        ks_hmi::SignalSpecification& signal = *session.signals().get(i);
        const bool isMoved = blocks[i] && blocks[i]->path != signal.m_blockPath;
        std::u16string& subSystem = signal.m_subSysPath;
        auto followed = isMoved ? followedSubSysPath(subSystem, signal.m_blockPath, blocks[i]->path) : std::nullopt;
        if (!followed && isAtOrBelow(subSystem, oldPath)) followed = newPath + subSystem.substr(oldPath.size());
        if (followed) subSystem = std::move(*followed);
        if (isMoved) signal.m_blockPath = blocks[i]->path;
    }
    session.signals().updateObservedPortMap();
}

void followByPath(const Session& session, const std::u16string& oldPath, const std::u16string& newPath) {
    for (std::size_t i = 0; i < session.clients().getCount(); ++i) {
        ks_hmi::SignalClient& client = *session.clients().get(i);
        const bool hasEid = !client.m_modelPathEID.empty() && !client.m_modelPathEID.front().empty();
        if (hasEid || client.m_modelPath.empty() || !isAtOrBelow(client.m_modelPath.front(), oldPath)) continue;
        client.m_modelPath.front() = newPath + client.m_modelPath.front().substr(oldPath.size());
    }
}

void alignClients(const Session& session) {
    const auto aligned = alignedClients(session);
    for (std::size_t i = 0; i < aligned.size(); ++i) session.clients().get(i)->m_modelPath = aligned[i]->m_modelPath;
}

}  // namespace

void moveBlocks(Session& session, const std::u16string& path, const std::u16string& newPath) {
    const std::vector<const Block*> blocks = blocksOfSignals(session);
    session.model().move(path, newPath);
    follow(session, blocks, path, newPath);
    followByPath(session, path, newPath);
    alignClients(session);
}

}  // namespace workbench
