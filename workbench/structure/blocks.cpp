#include "workbench/structure/blocks.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "signals/signal_specification.h"
#include "workbench/session/records.h"
#include "workbench/structure/ports.h"
#include "workbench/text/error.h"
#include "workbench/text/fresh_numbers.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

// Beyond all that are in the file: records of blocks that are gone must not find this one.
std::string freshEid(const Session& session) {
    FreshNumbers numbers;
    for (const kestrel::Block& block : session.model().blocks()) numbers.note(block.eid);
    for (const auto& signal : recordsOf(session.signals())) numbers.note(signal.m_eid);
    for (const auto& client : recordsOf(session.clients()))
        for (const auto& eid : client.m_modelPathEID) numbers.note(eid);
    if (session.origin())
        for (const GoneBlock& block : session.origin()->gone) numbers.note(block.eid);
    return std::to_string(numbers.next());
}

}  // namespace

const kestrel::Block& addBlock(Session& session, NewBlock block) {
    if (block.path.find(u'\0') != std::u16string::npos)
        throw Error(fmt::format("{}: a path cannot contain NUL characters", inQuotes(block.path)));
    requireOutputs(block.outputs);
    kestrel::Block added{.path = std::move(block.path), .eid = std::move(block.eid)};
    if (added.eid.empty()) added.eid = freshEid(session);
    added.outputs = std::move(block.outputs);
    if (block.isChart) added.chart.emplace();
    try {
        return session.model().add(std::move(added));
    } catch (const kestrel::ModelError& refusal) {
        throw Error(fmt::format("{} Choose another.", refusal.what()));
    }
}

RemovedBlocks removeBlocks(Session& session, const std::u16string& path, Below below, Marks marks) {
    RemovedBlocks removed;
    for (const kestrel::Block& block : session.model().blocks())
        if (isAtOrBelow(block.path, path)) removed.blocks.push_back(block.path);
    if (removed.blocks.empty()) throw Error(fmt::format("{}: the model has no such block", inQuotes(path)));
    const auto others = removed.blocks.size() - (session.model().findByPath(path) ? 1U : 0U);
    if (below == Below::refuse && others > 0)
        throw Error(fmt::format("{} has {} below it", inQuotes(path), counted(others, "block")), ErrorCode::request,
                    Remedy::removeBelow);
    const Positions signals =
        marksOn(session, [&](const SignalSource& source) { return isAtOrBelow(source.block->path, path); });
    settleMarks(session, signals, marks, inQuotes(path));
    removed.signals = signals.size();
    session.model().remove(path);
    return removed;
}

std::u16string renamedPath(const std::u16string& path, const std::u16string& name) {
    requireName(name);
    if (name.find(u'/') != std::u16string::npos)
        throw Error(
            fmt::format("{}: a name cannot contain '/'; move the block to give it another parent", inQuotes(name)));
    const std::u16string parent = parentPath(path);
    return parent.empty() ? name : parent + u"/" + name;
}

}  // namespace workbench
