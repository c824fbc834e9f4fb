#include <cstdint>
#include <optional>
#include <vector>

#include "python/native/define.h"
#include "python/native/open_model.h"
#include "python/native/watched_change.h"
#include "workbench/change/moving.h"
#include "workbench/change/renaming.h"
#include "workbench/change/renumbering.h"
#include "workbench/find/reference.h"
#include "workbench/structure/blocks.h"
#include "workbench/structure/chart_items.h"
#include "workbench/structure/ports.h"
#include "workbench/text/text.h"

namespace ks_hmi_python {

using namespace workbench;

namespace {

using Lists = WatchedChange::Lists;

Below belowOf(bool isBelow) { return isBelow ? Below::remove : Below::refuse; }
Marks marksOf(bool isUnmarked) { return isUnmarked ? Marks::remove : Marks::keep; }

std::string addBlock(OpenModel& model, const std::string& path, const std::string& eid,
                     const std::vector<std::string>& outputs, bool isChart) {
    NewBlock block{withoutModel(model.session().model(), path), eid, {}, isChart};
    for (const std::string& output : outputs) block.outputs.push_back(toUtf16(output));
    return blockText(model.session(), workbench::addBlock(model.session(), std::move(block)));
}

std::string removeBlock(OpenModel& model, const std::string& path, bool isBelow, bool isUnmarked) {
    Session& session = model.session();
    const DanglingWatch watch(session);
    WatchedChange change(session);
    const std::u16string meant = resolveParent(session.model(), path);
    for (const std::u16string& block : removeBlocks(session, meant, belowOf(isBelow), marksOf(isUnmarked)).blocks)
        change.block(&Lists::removed, block);
    warnOfLost(session, watch);
    return change.take("block remove");
}

std::string moveTo(Session& session, const MovePaths& paths, std::string_view command) {
    WatchedChange change(session);
    for (const auto& [before, after] : moveBlocks(session, paths.path, paths.newPath).blocks)
        change.block(&Lists::changed, after, before);
    return change.take(command);
}

std::string move(OpenModel& model, const std::string& block, const std::string& newPath) {
    return moveTo(model.session(), movePaths(model.session().model(), block, newPath), "move");
}

std::string renameBlock(OpenModel& model, const std::string& block, const std::string& name) {
    const std::u16string path = resolveParent(model.session().model(), block);
    return moveTo(model.session(), {path, renamedPath(path, toUtf16(name))}, "block rename");
}

std::string rename(OpenModel& model, const std::string& given) {
    Session& session = model.session();
    const std::u16string name = requireModelName(given);
    const std::u16string before = session.model().name();
    WatchedChange change(session);
    change.model(name == before ? &Lists::unchanged : &Lists::changed, name, before);
    if (name != before) renameModel(session, name);
    return change.take("rename");
}

std::string renumber(OpenModel& model, const std::string& path, const std::vector<int>& numbers) {
    Session& session = model.session();
    const kestrel::Block& block = resolveBlock(session.model(), path);
    const DanglingWatch watch(session);
    WatchedChange change(session, block);
    change.ports(block, renumberPorts(session, block, numbers));
    warnOfLost(session, watch);
    return change.take("renumber");
}

std::string addPort(OpenModel& model, const std::string& path, const std::string& name, std::optional<int> at) {
    Session& session = model.session();
    const kestrel::Block& block = resolveBlock(session.model(), path);
    WatchedChange change(session, block);
    const Renumbering moved = workbench::addPort(session, block, toUtf16(name), at);
    change.port(&Lists::added, block, {0, at.value_or(static_cast<int>(block.outputs.size())), toUtf16(name)});
    change.ports(block, moved);
    return change.take("port add");
}

std::string removePort(OpenModel& model, const std::string& path, const std::string& call, bool isUnmarked) {
    Session& session = model.session();
    const kestrel::Block& block = resolveBlock(session.model(), path);
    const int port = portCalled(session.model(), block, call);
    const DanglingWatch watch(session);
    WatchedChange change(session, block);
    change.ports(block, workbench::removePort(session, block, port, marksOf(isUnmarked)));
    warnOfLost(session, watch);
    return change.take("port remove");
}

std::string renamePort(OpenModel& model, const std::string& path, const std::string& call, const std::string& name) {
    Session& session = model.session();
    const kestrel::Block& block = resolveBlock(session.model(), path);
    const int port = portCalled(session.model(), block, call);
    const bool isSame = block.outputs[static_cast<std::size_t>(port) - 1] == toUtf16(name);
    WatchedChange change(session, block);
    if (!isSame) workbench::renamePort(session, block, port, toUtf16(name));
    change.port(isSame ? &Lists::unchanged : &Lists::changed, block, {port, 0, toUtf16(name)});
    return change.take("port rename");
}

std::string addItem(OpenModel& model, ItemKind kind, const std::string& chart, const std::string& name,
                    std::optional<std::uint32_t> ssid) {
    Session& session = model.session();
    const kestrel::Block& block = resolveBlock(session.model(), chart);
    WatchedChange change(session, block);
    workbench::addItem(session, block, kind, toUtf16(name), ssid);
    change.item(&Lists::added, block, toUtf16(name));
    return change.take(kind == ItemKind::state ? "chart add-state" : "chart add-datum");
}

std::string addState(OpenModel& model, const std::string& chart, const std::string& name,
                     std::optional<std::uint32_t> ssid) {
    return addItem(model, ItemKind::state, chart, name, ssid);
}

std::string addDatum(OpenModel& model, const std::string& chart, const std::string& name,
                     std::optional<std::uint32_t> ssid) {
    return addItem(model, ItemKind::datum, chart, name, ssid);
}

std::string removeItem(OpenModel& model, const std::string& call, std::optional<std::uint32_t> ssid, bool isBelow,
                       bool isUnmarked) {
    Session& session = model.session();
    const SignalSource source = itemCalled(session.model(), call, {{}, ssid});
    const DanglingWatch watch(session);
    WatchedChange change(session, *source.block);
    const RemovedItems removed =
        workbench::removeItem(session, *source.block, *source.item, belowOf(isBelow), marksOf(isUnmarked));
    for (const std::u16string& item : removed.items) change.item(&Lists::removed, *source.block, item);
    warnOfLost(session, watch);
    return change.take("chart remove");
}

std::string renameItem(OpenModel& model, const std::string& call, const std::string& name,
                       std::optional<std::uint32_t> ssid) {
    Session& session = model.session();
    const SignalSource source = itemCalled(session.model(), call, {{}, ssid});
    WatchedChange change(session, *source.block);
    for (const auto& [before, after] : workbench::renameItem(session, *source.block, *source.item, toUtf16(name)).items)
        change.item(&Lists::changed, *source.block, after, before);
    return change.take("chart rename");
}

}  // namespace

void bindStructure(py::module_& module) {
    define(module, "addBlock", addBlock);
    define(module, "removeBlock", removeBlock);
    define(module, "renameBlock", renameBlock);
    define(module, "move", move);
    define(module, "rename", rename);
    define(module, "renumber", renumber);
    define(module, "addPort", addPort);
    define(module, "removePort", removePort);
    define(module, "renamePort", renamePort);
    define(module, "addState", addState);
    define(module, "addDatum", addDatum);
    define(module, "removeItem", removeItem);
    define(module, "renameItem", renameItem);
}

}  // namespace ks_hmi_python
