#include <fmt/format.h>

#include <optional>

#include "kshmi/commands/commands.h"
#include "kshmi/commands/structure/structure_change.h"
#include "kshmi/print/json/structure_records.h"
#include "workbench/find/reference.h"
#include "workbench/structure/ports.h"
#include "workbench/text/text.h"

namespace kshmi {

namespace {

using namespace workbench;

struct PortArguments {
    std::string file;
    std::string block;
    std::string port;  // number or name
    std::string name;
    std::optional<int> at;
    bool isUnmarking = false;
    ChangeOptions options;
};

ChangeReport::Members membersOf(const std::u16string& block, const PortChange& one) {
    return [=](JsonObject& object) { appendPort(object, block, one); };
}

// What moved besides.
void tellFollowers(const std::u16string& block, const Renumbering& changes, ChangeReport& report) {
    for (const PortChange& one : changes.ports)
        if (one.to != 0)
            report.note(
                Fate::changed, fmt::format("  port {} ({}) would become {}", one.from, printable(one.name), one.to),
                fmt::format("  port {} ({}) becomes {}", one.from, printable(one.name), one.to), membersOf(block, one));
    for (const PortChange& one : changes.signals)
        report.note(fmt::format("  signal {} on port {} would follow to port {}", inQuotes(one.name), one.from, one.to),
                    fmt::format("  signal {} on port {} follows to port {}", inQuotes(one.name), one.from, one.to));
}

void add(Session& session, ChangeReport& report, const PortArguments& arguments) {
    const kestrel::Block& block = resolveBlock(session.model(), arguments.block);
    const Renumbering moved = addPort(session, block, toUtf16(arguments.name), arguments.at);
    const std::u16string full = session.model().fullPath(block);
    const auto number = arguments.at.value_or(static_cast<int>(block.outputs.size()));
    report.change(
        Fate::added, "add", "added",
        fmt::format("port {} ({}) to {}", number, printable(std::string_view(arguments.name)), printable(block.path)),
        membersOf(full, {0, number, toUtf16(arguments.name)}));
    tellFollowers(full, moved, report);
}

void remove(Session& session, ChangeReport& report, const PortArguments& arguments) {
    const kestrel::Block& block = resolveBlock(session.model(), arguments.block);
    const int port = portCalled(session.model(), block, arguments.port);
    const std::u16string name = block.outputs[static_cast<std::size_t>(port) - 1];
    const std::u16string full = session.model().fullPath(block);
    const Renumbering moved = removePort(session, block, port, arguments.isUnmarking ? Marks::remove : Marks::keep);
    report.change(Fate::removed, "remove", "removed",
                  fmt::format("port {} ({}) of {}", port, printable(name), printable(block.path)),
                  membersOf(full, {port, 0, name}));
    tellFollowers(full, moved, report);
}

void rename(Session& session, ChangeReport& report, const PortArguments& arguments) {
    const kestrel::Block& block = resolveBlock(session.model(), arguments.block);
    const int port = portCalled(session.model(), block, arguments.port);
    const std::u16string old = block.outputs[static_cast<std::size_t>(port) - 1];
    if (toUtf16(arguments.name) == old) {
        report.keep(Fate::unchanged, "already named " + printable(old),
                    membersOf(session.model().fullPath(block), {port, 0, old}));
        return;
    }
    renamePort(session, block, port, toUtf16(arguments.name));
    report.change(Fate::changed, "rename", "renamed",
                  fmt::format("port {} of {} from {} to {}", port, printable(block.path), printable(old),
                              printable(std::string_view(arguments.name))),
                  membersOf(session.model().fullPath(block), {port, 0, toUtf16(arguments.name)}));
}

void addBlockOption(CLI::App& command, PortArguments& arguments) {
    command.add_option("BLOCK", arguments.block, "path of the block")->required();
}

void describeAdd(CLI::App& app, Run& run) {
    const auto arguments = std::make_shared<PortArguments>();
    CLI::App* const command =
        addCommand(app, "add", "Add an output port to a block; ports behind it and their signals move on",
                   "  kshmi port add cruise.json Sensors/Speed quality\n"
                   "  kshmi port add cruise.json Sensors/Speed raw --at 1",
                   arguments->file);
    addBlockOption(*command, *arguments);
    command->add_option("NAME", arguments->name, "name of the port")->required();
    command->add_option("--at", arguments->at, "its number; the last one if left out")
        ->transform(wholeNumber(1, std::numeric_limits<std::int32_t>::max()));
    addChangeOptions(*command, arguments->options);
    runWith(*command, changing<PortArguments>("port add", add), arguments, run);
}

void describeRemove(CLI::App& app, Run& run) {
    const auto arguments = std::make_shared<PortArguments>();
    CLI::App* const command =
        addCommand(app, "remove", "Remove an output port of a block; ports behind it and their signals move up",
                   "  kshmi port remove cruise.json Sensors/Speed valid\n"
                   "  kshmi port remove cruise.json Sensors/Speed 1 --unmark",
                   arguments->file);
    addBlockOption(*command, *arguments);
    command->add_option("PORT", arguments->port, "number or name of the port")->required();
    command->add_flag("--unmark", arguments->isUnmarking, "remove the signals on it, too");
    addChangeOptions(*command, arguments->options);
    runWith(*command, changing<PortArguments>("port remove", remove), arguments, run);
}

void describeRename(CLI::App& app, Run& run) {
    const auto arguments = std::make_shared<PortArguments>();
    CLI::App* const command = addCommand(app, "rename", "Give an output port another name; signals keep theirs",
                                         "  kshmi port rename cruise.json Sensors/Speed valid ok", arguments->file);
    addBlockOption(*command, *arguments);
    command->add_option("PORT", arguments->port, "number or name of the port")->required();
    command->add_option("NAME", arguments->name, "its new name")->required();
    addChangeOptions(*command, arguments->options);
    runWith(*command, changing<PortArguments>("port rename", rename), arguments, run);
}

}  // namespace

void addPort(CLI::App& app, Run& run) {
    CLI::App* const command = app.add_subcommand("port", "Add, remove and rename the output ports of a block");
    command->require_subcommand(1);
    for (const auto describe : {describeAdd, describeRemove, describeRename}) describe(*command, run);
}

}  // namespace kshmi
