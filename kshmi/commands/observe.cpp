#include "kshmi/commands/command_options.h"
#include "kshmi/commands/commands.h"
#include "kshmi/commands/selecting.h"
#include "kshmi/print/reports/change_report.h"
#include "kshmi/print/reports/lost_clients.h"
#include "workbench/change/observing.h"
#include "workbench/find/client_names.h"
#include "workbench/find/watching.h"

namespace kshmi {

namespace {

using namespace workbench;

struct ObserveArguments {
    std::string file;
    SelectionArguments what;
    std::vector<std::string> signals;  // UUIDs and positions
    ClientArguments client;
    ChangeOptions options;
};

int runObserve(const ObserveArguments& arguments, const Output& output) {
    const ClientSettings settings = settingsOf(arguments.client);
    requireSelection(arguments.what, !arguments.signals.empty(), "--signal");
    kshmi::enterHost(output.err);
    Session session(arguments.file);
    const SignalUuids uuids(session);
    ChangeReport report(output, "observe", arguments.options, session);
    const Positions signals = signalsToWatch(session, select(session.model(), arguments.what, output),
                                             arguments.what.selection.options, arguments.signals);
    const Positions added = addClients(session, signals, settings);
    for (const std::size_t position : added) report.change("add", "added", describeClient(session, position, uuids));
    if (!added.empty()) warnOfDeprecated(*session.clients().get(added.back()), arguments.file, output.err);
    return report.finish();
}

}  // namespace

void addObserve(CLI::App& app, Run& run) {
    const auto arguments = std::make_shared<ObserveArguments>();
    CLI::App* const command =
        addCommand(app, "observe", "Let clients watch marked ports and chart items, and save the model",
                   "  kshmi observe cruise.json Sensors/Speed:1 --type ks_scope_observer\n"
                   "  kshmi observe cruise.json 'Set Speed:1' --type ks_gauge_observer --params '{\"max\": 180}'\n"
                   "  kshmi observe cruise.json --all 'Plant/*' --type ks_logger_observer --update-rate 10",
                   arguments->file);
    addSelection(*command, arguments->what);
    command->add_option("--signal", arguments->signals, "the signal with this UUID or position; may be repeated")
        ->allow_extra_args(false);
    command->add_option("--type", arguments->client.type, "kind of client (its observer type)")->required();
    addClientSettings(*command, arguments->client);
    addChangeOptions(*command, arguments->options);
    runWith(*command, runObserve, arguments, run);
}

}  // namespace kshmi
