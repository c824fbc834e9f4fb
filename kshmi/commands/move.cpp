#include <fmt/format.h>

#include "kshmi/commands/command_options.h"
#include "kshmi/commands/commands.h"
#include "kshmi/print/json/structure_records.h"
#include "kshmi/print/reports/change_report.h"
#include "workbench/change/moving.h"
#include "workbench/text/text.h"

namespace kshmi {

namespace {

using namespace workbench;

struct MoveArguments {
    std::string file;
    std::string block;
    std::string newPath;
    ChangeOptions options;
};

void tell(const kestrel::Model& model, const Moved& moved, ChangeReport& report) {
    for (const auto& [before, after] : moved.blocks)
        report.change(Fate::changed, "move", "moved", fmt::format("{} to {}", printable(before), printable(after)),
                      [&, from = before, to = after](JsonObject& object) {
                          appendBlock(object, model.name() + u"/" + to, model.name() + u"/" + from);
                      });
    const std::string followers =
        fmt::format("{}, {}", counted(moved.signals, "signal"), counted(moved.clients, "client"));
    report.note("would follow: " + followers, "following: " + followers);
}

int runMove(const MoveArguments& arguments, const Output& output) {
    kshmi::enterHost(output.err);
    Session session(arguments.file);
    const auto [path, newPath] = movePaths(session.model(), arguments.block, arguments.newPath);
    ChangeReport report(output, "move", arguments.options, session);
    tell(session.model(), moveBlocks(session, path, newPath), report);
    return report.finish();
}

}  // namespace

void addMove(CLI::App& app, Run& run) {
    const auto arguments = std::make_shared<MoveArguments>();
    CLI::App* const command = addCommand(
        app, "move", "Move a block, or a parent, and all below it; signals and clients follow, and the model is saved",
        "  kshmi move cruise.json Sensors/Speed 'Inputs/Wheel Speed'\n  kshmi move cruise.json Plant Vehicle --dry-run",
        arguments->file);
    command->add_option("BLOCK", arguments->block, "path of the block or parent")->required();
    command->add_option("NEW-PATH", arguments->newPath, "its new path, parents included")->required();
    addChangeOptions(*command, arguments->options);
    runWith(*command, runMove, arguments, run);
}

}  // namespace kshmi
