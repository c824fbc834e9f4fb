#include <fmt/format.h>

#include "kshmi/commands/command_options.h"
#include "kshmi/commands/commands.h"
#include "kshmi/print/change_report.h"
#include "signals/signal_specification.h"
#include "workbench/change/moving.h"
#include "workbench/session/host_process.h"
#include "workbench/text/error.h"
#include "workbench/text/text.h"

namespace kshmi {

namespace {

using namespace workbench;

struct MoveArguments {
    std::string file;
    std::string block;
    std::string newPath;
    bool isDryRun = false;
};

std::u16string requirePath(const std::string& text, std::u16string path) {
    const bool isBad = !kestrel::isBlockPath(path) || path.find(u'\0') != std::u16string::npos;
    if (isBad) throw Error(inQuotes(text) + ": is no path; give names with one '/' between them");
    return path;
}

/// What a move may change.
struct Paths {
    std::vector<std::u16string> blocks;
    std::vector<std::u16string> signals;
    std::vector<std::vector<std::u16string>> clients;
};

Paths pathsOf(const Session& session) {
    Paths paths;
    for (const kestrel::Block& block : session.model().blocks()) paths.blocks.push_back(block.path);
    for (std::size_t i = 0; i < session.signals().getCount(); ++i)
        paths.signals.push_back(session.signals().get(i)->m_blockPath);
    for (std::size_t i = 0; i < session.clients().getCount(); ++i)
        paths.clients.push_back(session.clients().get(i)->m_modelPath);
    return paths;
}

template <typename List>
std::size_t differences(const List& before, const List& after) {
    std::size_t count = 0;
    for (std::size_t i = 0; i < before.size(); ++i) count += before[i] != after[i] ? 1U : 0U;
    return count;
}

void tell(const Paths& before, const Paths& after, ChangeReport& report) {
    for (std::size_t i = 0; i < before.blocks.size(); ++i)
        if (before.blocks[i] != after.blocks[i])
            report.change("move", "moved",
                          fmt::format("{} to {}", printable(before.blocks[i]), printable(after.blocks[i])));
    const std::size_t signals = differences(before.signals, after.signals);
    const std::size_t clients = differences(before.clients, after.clients);
    const std::string followers = fmt::format("{}, {}", counted(signals, "signal"), counted(clients, "client"));
    report.note("would follow: " + followers, "following: " + followers);
}

int runMove(const MoveArguments& arguments, const Output& output) {
    enterHost(output.err);
    Session session(arguments.file);
    const std::u16string path = resolveBlock(session.model(), arguments.block).path;
    // Beside a block with the model's name, both paths are read in the way in which the first one is found.
    const bool isLiteral = path != withoutModel(session.model(), arguments.block);
    const std::u16string newPath = requirePath(
        arguments.newPath, isLiteral ? toUtf16(arguments.newPath) : withoutModel(session.model(), arguments.newPath));
    const Paths before = pathsOf(session);
    ChangeReport report(output, arguments.isDryRun);
    try {
        if (path != newPath) moveBlocks(session, path, newPath);
    } catch (const kestrel::ModelError& refusal) {
        throw Error(std::string(refusal.what()) + " Name another path.");
    }
    tell(before, pathsOf(session), report);
    report.finish(session);
    return kSuccess;
}

}  // namespace

void addMove(CLI::App& app, Run& run) {
    const auto arguments = std::make_shared<MoveArguments>();
    CLI::App* const command = addCommand(
        app, "move", "Move a block and all below it; signals and observers follow, and the model is saved",
        "  kshmi move cruise.json Sensors/Speed 'Inputs/Wheel Speed'\n  kshmi move cruise.json Plant Vehicle --dry-run",
        arguments->file);
    command->add_option("BLOCK", arguments->block, "path of the block")->required();
    command->add_option("NEW-PATH", arguments->newPath, "its new path, parents included")->required();
    addDryRun(*command, arguments->isDryRun);
    runWith(*command, runMove, arguments, run);
}

}  // namespace kshmi
