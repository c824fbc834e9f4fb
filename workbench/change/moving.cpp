#include "workbench/change/moving.h"

#include <fmt/format.h>

#include <utility>
#include <vector>

#include "signals/signal_specification.h"
#include "workbench/change/observing.h"
#include "workbench/find/reference.h"
#include "workbench/session/records.h"
#include "workbench/session/signal_source.h"
#include "workbench/text/error.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

using kestrel::Block;

std::vector<const Block*> blocksOfSignals(const Session& session) {
    std::vector<const Block*> blocks;
    for (const auto& signal : recordsOf(session.signals())) blocks.push_back(blockOf(session.model(), signal));
    return blocks;
}

// The signals take over the paths of their blocks, in the same order; null: gone. A subsystem path may also lead to a
// parent farther up.
void follow(Session& session, const std::vector<const Block*>& blocks, const std::u16string& oldPath,
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

void followByPath(Session& session, const std::u16string& oldPath, const std::u16string& newPath) {
    for (ks_hmi::SignalClient& client : recordsOf(session.clients())) {
        const bool hasEid = !client.m_modelPathEID.empty() && !client.m_modelPathEID.front().empty();
        if (hasEid || client.m_modelPath.empty() || !isAtOrBelow(client.m_modelPath.front(), oldPath)) continue;
        client.m_modelPath.front() = newPath + client.m_modelPath.front().substr(oldPath.size());
    }
}

void alignClients(Session& session) {
    const auto aligned = alignedClients(session);
    for (std::size_t i = 0; i < aligned.size(); ++i) session.clients().get(i)->m_modelPath = aligned[i]->m_modelPath;
}

// What a move may change.
struct Paths {
    std::vector<std::u16string> blocks;
    std::vector<std::u16string> signals;
    std::vector<std::vector<std::u16string>> clients;
};

Paths pathsOf(const Session& session) {
    Paths paths;
    for (const kestrel::Block& block : session.model().blocks()) paths.blocks.push_back(block.path);
    for (const auto& signal : recordsOf(session.signals())) paths.signals.push_back(signal.m_blockPath);
    for (const auto& client : recordsOf(session.clients())) paths.clients.push_back(client.m_modelPath);
    return paths;
}

template <class List>
std::size_t differences(const List& before, const List& after) {
    std::size_t count = 0;
    for (std::size_t i = 0; i < before.size(); ++i) count += before[i] != after[i] ? 1U : 0U;
    return count;
}

Moved changesBetween(const Paths& before, const Paths& after) {
    Moved moved;
    for (std::size_t i = 0; i < before.blocks.size(); ++i)
        if (before.blocks[i] != after.blocks[i]) moved.blocks.emplace_back(before.blocks[i], after.blocks[i]);
    moved.signals = differences(before.signals, after.signals);
    moved.clients = differences(before.clients, after.clients);
    return moved;
}

void moveInModel(kestrel::Model& model, const std::u16string& path, const std::u16string& newPath) {
    try {
        model.move(path, newPath);
    } catch (const kestrel::ModelError& refusal) {
        throw Error(fmt::format("{} Name another path.", refusal.what()));
    }
}

}  // namespace

MovePaths movePaths(const kestrel::Model& model, const std::string& block, const std::string& newPath) {
    MovePaths paths{resolveParent(model, block), {}};
    const bool isLiteral = paths.path != withoutModel(model, block) && !newPath.starts_with('/');
    paths.newPath = isLiteral ? toUtf16(newPath) : withoutModel(model, newPath);
    const bool isPath = kestrel::isBlockPath(paths.newPath) && paths.newPath.find(u'\0') == std::u16string::npos;
    if (!isPath) throw Error(inQuotes(newPath) + ": is not a path; give names with one '/' between them");
    return paths;
}

Moved moveBlocks(Session& session, const std::u16string& path, const std::u16string& newPath) {
    const Paths before = pathsOf(session);
    if (path != newPath) {
        const std::vector<const Block*> blocks = blocksOfSignals(session);
        moveInModel(session.model(), path, newPath);
        follow(session, blocks, path, newPath);
        followByPath(session, path, newPath);
        alignClients(session);
    }
    return changesBetween(before, pathsOf(session));
}

}  // namespace workbench
