#include <fmt/format.h>

#include "kshmi/commands/commands.h"
#include "kshmi/commands/structure/structure_change.h"
#include "kshmi/print/json/structure_records.h"
#include "workbench/change/moving.h"
#include "workbench/find/reference.h"
#include "workbench/structure/blocks.h"
#include "workbench/text/text.h"

namespace kshmi {

namespace {

using namespace workbench;

struct BlockArguments {
    std::string file;
    std::string path;
    std::string eid;
    std::string outputs;  // with commas between
    std::string name;
    bool isChart = false;
    bool isRecursive = false;
    bool isUnmarking = false;
    ChangeOptions options;
};

ChangeReport::Members membersOf(const Session& session, const std::u16string& path, const std::u16string& from = {}) {
    return [=, model = session.model().name() + u"/"](JsonObject& object) {
        appendBlock(object, model + path, from.empty() ? from : model + from);
    };
}

std::vector<std::u16string> outputsOf(const std::string& text) {
    std::vector<std::u16string> outputs;
    if (text.empty()) return outputs;
    const std::u16string all = toUtf16(text);
    for (std::size_t start = 0, comma = 0; comma != std::u16string::npos; start = comma + 1) {
        comma = all.find(u',', start);
        outputs.push_back(all.substr(start, comma - start));
    }
    return outputs;
}

void add(Session& session, ChangeReport& report, const BlockArguments& arguments) {
    const kestrel::Block& block = addBlock(session, {withoutModel(session.model(), arguments.path), arguments.eid,
                                                     outputsOf(arguments.outputs), arguments.isChart});
    report.change(
        Fate::added, "add", "added",
        fmt::format("{} {} (element identifier {}) with {}", block.chart ? "chart" : "block", printable(block.path),
                    printable(std::string_view(block.eid)), counted(block.outputs.size(), "output port")),
        membersOf(session, block.path));
}

void remove(Session& session, ChangeReport& report, const BlockArguments& arguments) {
    const RemovedBlocks removed = removeBlocks(session, resolveParent(session.model(), arguments.path),
                                               arguments.isRecursive ? Below::remove : Below::refuse,
                                               arguments.isUnmarking ? Marks::remove : Marks::keep);
    for (const std::u16string& path : removed.blocks)
        report.change(Fate::removed, "remove", "removed", "block " + printable(path), membersOf(session, path));
    tellRemoved(removed.signals, report);
}

void rename(Session& session, ChangeReport& report, const BlockArguments& arguments) {
    const std::u16string path = resolveParent(session.model(), arguments.path);
    const Moved moved = moveBlocks(session, path, renamedPath(path, toUtf16(arguments.name)));
    for (const auto& [before, after] : moved.blocks)
        report.change(Fate::changed, "rename", "renamed", fmt::format("{} to {}", printable(before), printable(after)),
                      membersOf(session, after, before));
    const std::string followers =
        fmt::format("{}, {}", counted(moved.signals, "signal"), counted(moved.clients, "client"));
    report.note("would follow: " + followers, "following: " + followers);
}

void describeAdd(CLI::App& app, Run& run) {
    const auto arguments = std::make_shared<BlockArguments>();
    CLI::App* const command = addCommand(app, "add", "Add a block to a model",
                                         "  kshmi block add cruise.json Sensors/Distance --outputs distance,valid\n"
                                         "  kshmi block add cruise.json Control/Gear --chart --eid 40",
                                         arguments->file);
    command->add_option("PATH", arguments->path, "path of the block; its parents need not be there")->required();
    command->add_option(
        "--outputs", arguments->outputs,
        "names of its output ports, with commas between; blanks belong to a name, and one with a comma is for "
        "\"kshmi port add\"");
    command->add_option("--eid", arguments->eid, "element identifier; a new number if left out");
    command->add_flag("--chart", arguments->isChart, "the block is a chart");
    addChangeOptions(*command, arguments->options);
    runWith(*command, changing<BlockArguments>("block add", add), arguments, run);
}

void describeRemove(CLI::App& app, Run& run) {
    const auto arguments = std::make_shared<BlockArguments>();
    CLI::App* const command = addCommand(app, "remove", "Remove a block from a model",
                                         "  kshmi block remove cruise.json Sensors/Pedal --dry-run\n"
                                         "  kshmi block remove cruise.json Sensors --recursive --unmark",
                                         arguments->file);
    command->add_option("PATH", arguments->path, "path of the block or of a parent")->required();
    command->add_flag("--recursive", arguments->isRecursive, "remove all below it, too");
    command->add_flag("--unmark", arguments->isUnmarking, "remove the signals on it, too");
    addChangeOptions(*command, arguments->options);
    runWith(*command, changing<BlockArguments>("block remove", remove), arguments, run);
}

void describeRename(CLI::App& app, Run& run) {
    const auto arguments = std::make_shared<BlockArguments>();
    CLI::App* const command =
        addCommand(app, "rename", "Give a block another name; signals and clients follow",
                   "  kshmi block rename cruise.json Sensors/Speed 'Wheel Speed'", arguments->file);
    command->add_option("PATH", arguments->path, "path of the block or of a parent")->required();
    command->add_option("NAME", arguments->name, "its new name, without parents")->required();
    addChangeOptions(*command, arguments->options);
    runWith(*command, changing<BlockArguments>("block rename", rename), arguments, run);
}

}  // namespace

void addBlock(CLI::App& app, Run& run) {
    CLI::App* const command = app.add_subcommand("block", "Add, remove and rename the blocks of a model");
    command->require_subcommand(1);
    for (const auto describe : {describeAdd, describeRemove, describeRename}) describe(*command, run);
}

}  // namespace kshmi
