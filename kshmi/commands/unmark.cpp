#include "kshmi/commands/command_options.h"
#include "kshmi/commands/commands.h"
#include "kshmi/commands/selecting.h"
#include "kshmi/print/reports/change_report.h"
#include "kshmi/print/reports/lost_clients.h"
#include "workbench/change/marking.h"
#include "workbench/find/client_names.h"
#include "workbench/find/positions.h"
#include "workbench/find/watching.h"

namespace kshmi {

namespace {

using namespace workbench;

struct UnmarkArguments {
    std::string file;
    SelectionArguments what;
    std::vector<std::string> signals;  // UUIDs and positions
    bool isDangling = false;
    ChangeOptions options;
};

Positions positionsOf(const Session& session, const UnmarkArguments& arguments, const Output& output) {
    Positions positions =
        signalsOn(session, select(session.model(), arguments.what, output), arguments.what.selection.options);
    for (const std::string& call : arguments.signals) positions.push_back(signalCalled(session, call));
    for (const SignalFault& fault : session.dangling()) positions.push_back(fault.position);
    sortUnique(positions);
    return positions;
}

int runUnmark(const UnmarkArguments& arguments, const Output& output) {
    requireSelection(arguments.what, arguments.isDangling || !arguments.signals.empty(), "--signal, --dangling");
    kshmi::enterHost(output.err);
    Session session(arguments.file, arguments.isDangling ? Session::Opening::lenient : Session::Opening::strict);
    Positions positions = positionsOf(session, arguments, output);
    ChangeReport report(output, "unmark", arguments.options, session);
    for (const std::size_t position : positions) report.change("remove", "removed", describeSignal(session, position));
    const DanglingWatch watch(session);
    removeSignals(session, std::move(positions));
    const ExitCode code = report.finish();
    warnOfLost(session, watch, arguments.options.isDryRun, output.err);
    return code;
}

}  // namespace

void addUnmark(CLI::App& app, Run& run) {
    const auto arguments = std::make_shared<UnmarkArguments>();
    CLI::App* const command =
        addCommand(app, "unmark", "Remove all signals on ports and chart items and save the model",
                   "  kshmi unmark cruise.json Sensors/Speed:1\n"
                   "  kshmi unmark cruise.json --all 'Plant/*'\n"
                   "  kshmi unmark cruise.json --signal 3\n"
                   "  kshmi unmark cruise.json --dangling",
                   arguments->file);
    addSelection(*command, arguments->what);
    command->add_option("--signal", arguments->signals, "the signal with this UUID or position; may be repeated")
        ->allow_extra_args(false);
    command->add_flag("--dangling", arguments->isDangling, "remove signals whose block, port or chart item is gone");
    addChangeOptions(*command, arguments->options);
    runWith(*command, runUnmark, arguments, run);
}

}  // namespace kshmi
