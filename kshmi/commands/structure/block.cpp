#include <fmt/format.h>

#include "kshmi/commands/command_options.h"
#include "kshmi/commands/commands.h"
#include "kshmi/print/change_report.h"
#include "kshmi/print/lost_clients.h"
#include "workbench/change/moving.h"
#include "workbench/find/reference.h"
#include "workbench/find/watching.h"
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
        object.text("kind", std::string_view("block")).text("block", model + path);
        if (!from.empty()) object.text("from", model + from);
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

int runAdd(const BlockArguments& arguments, const Output& output) {
    kshmi::enterHost(output.err);
    Session session(arguments.file);
    ChangeReport report(output, "block add", arguments.options, session);
    const kestrel::Block& block = addBlock(session, {withoutModel(session.model(), arguments.path), arguments.eid,
                                                     outputsOf(arguments.outputs), arguments.isChart});
    report.change(
        Fate::added, "add", "added",
        fmt::format("{} {} (element identifier {}) with {}", block.chart ? "chart" : "block", printable(block.path),
                    printable(std::string_view(block.eid)), counted(block.outputs.size(), "output port")),
        membersOf(session, block.path));
    return report.finish();
}

int runRemove(const BlockArguments& arguments, const Output& output) {
    kshmi::enterHost(output.err);
    Session session(arguments.file);
    ChangeReport report(output, "block remove", arguments.options, session);
    const DanglingWatch watch(session);
    const RemovedBlocks removed = removeBlocks(session, resolveParent(session.model(), arguments.path),
                                               arguments.isRecursive ? Below::remove : Below::refuse,
                                               arguments.isUnmarking ? Marks::remove : Marks::keep);
    for (const std::u16string& path : removed.blocks)
        report.change(Fate::removed, "remove", "removed", "block " + printable(path), membersOf(session, path));
    const std::string signals = counted(removed.signals, "signal");
    if (removed.signals > 0)
        report.note(fmt::format("  {} would go with it", signals), fmt::format("  {} went with it", signals));
    const ExitCode code = report.finish();
    warnOfLost(session, watch, arguments.options.isDryRun, output.err);
    return code;
}

int runRename(const BlockArguments& arguments, const Output& output) {
    kshmi::enterHost(output.err);
    Session session(arguments.file);
    ChangeReport report(output, "block rename", arguments.options, session);
    const std::u16string path = resolveParent(session.model(), arguments.path);
    const Moved moved = moveBlocks(session, path, renamedPath(path, toUtf16(arguments.name)));
    for (const auto& [before, after] : moved.blocks)
        report.change(Fate::changed, "rename", "renamed", fmt::format("{} to {}", printable(before), printable(after)),
                      membersOf(session, after, before));
    const std::string followers =
        fmt::format("{}, {}", counted(moved.signals, "signal"), counted(moved.clients, "client"));
    report.note("would follow: " + followers, "following: " + followers);
    return report.finish();
}

void describeAdd(CLI::App& app, Run& run) {
    const auto arguments = std::make_shared<BlockArguments>();
    CLI::App* const command = addCommand(app, "add", "Add a block to a model",
                                         "  kshmi block add cruise.json Sensors/Distance --outputs distance,valid\n"
                                         "  kshmi block add cruise.json Control/Gear --chart --eid 40",
                                         arguments->file);
    command->add_option("PATH", arguments->path, "path of the block; its parents need not be there")->required();
    command->add_option("--outputs", arguments->outputs, "names of its output ports, with commas between");
    command->add_option("--eid", arguments->eid, "element identifier; a new number if left out");
    command->add_flag("--chart", arguments->isChart, "the block is a chart");
    addChangeOptions(*command, arguments->options);
    runWith(*command, runAdd, arguments, run);
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
    runWith(*command, runRemove, arguments, run);
}

void describeRename(CLI::App& app, Run& run) {
    const auto arguments = std::make_shared<BlockArguments>();
    CLI::App* const command =
        addCommand(app, "rename", "Give a block another name; signals and clients follow",
                   "  kshmi block rename cruise.json Sensors/Speed 'Wheel Speed'", arguments->file);
    command->add_option("PATH", arguments->path, "path of the block or of a parent")->required();
    command->add_option("NAME", arguments->name, "its new name, without parents")->required();
    addChangeOptions(*command, arguments->options);
    runWith(*command, runRename, arguments, run);
}

}  // namespace

void addBlock(CLI::App& app, Run& run) {
    CLI::App* const command = app.add_subcommand("block", "Add, remove and rename the blocks of a model");
    command->require_subcommand(1);
    for (const auto describe : {describeAdd, describeRemove, describeRename}) describe(*command, run);
}

}  // namespace kshmi
