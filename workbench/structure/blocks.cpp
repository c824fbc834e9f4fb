#include "workbench/structure/blocks.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <utility>

#include "signals/signal_specification.h"
#include "workbench/session/records.h"
#include "workbench/structure/ports.h"
#include "workbench/text/error.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

// The identifier as a number, 0 when it is none.
std::uint64_t numberOf(std::string_view eid) {
    std::uint64_t number = 0;
    const char* const end = eid.data() + eid.size();
    const auto [stop, code] = std::from_chars(eid.data(), end, number);
    return code == std::errc() && stop == end ? number : 0;
}

// Beyond all that are in the file: records of blocks that are gone must not find this one.
std::string freshEid(const Session& session) {
    std::vector<std::uint64_t> numbers{0};
    const auto note = [&](std::string_view eid) { numbers.push_back(numberOf(eid)); };
    for (const kestrel::Block& block : session.model().blocks()) note(block.eid);
    for (const auto& signal : recordsOf(session.signals())) note(signal.m_eid);
    for (const auto& client : recordsOf(session.clients()))
        for (const auto& eid : client.m_modelPathEID) note(eid);
    if (session.origin())
        for (const GoneBlock& block : session.origin()->gone) note(block.eid);
    std::ranges::sort(numbers);
    std::uint64_t fresh = numbers.back();
    // Behind the largest number of all there is none.
    if (fresh != std::numeric_limits<std::uint64_t>::max()) return std::to_string(fresh + 1);
    while (std::ranges::binary_search(numbers, fresh)) --fresh;
    return std::to_string(fresh);
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
