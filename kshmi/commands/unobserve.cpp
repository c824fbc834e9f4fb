#include <utility>

#include "kshmi/commands/command_options.h"
#include "kshmi/commands/commands.h"
#include "kshmi/commands/selecting.h"
#include "kshmi/print/reports/change_report.h"
#include "workbench/change/observing.h"
#include "workbench/find/client_names.h"
#include "workbench/find/selecting_clients.h"
#include "workbench/find/watching.h"
#include "workbench/text/error.h"

namespace kshmi {

namespace {

using namespace workbench;

struct UnobserveArguments {
    std::string file;
    SelectionArguments what;
    ClientSelection clients;
    bool isUnused = false;  // the host is asked which ones it does not need
    ChangeOptions options;
};

// What the host drops is described while it is there.
void dropUnused(Session& session, ChangeReport& report) {
    const SignalUuids uuids(session);
    std::vector<std::string> descriptions;
    for (std::size_t i = 0; i < session.clients().getCount(); ++i)
        descriptions.push_back(describeClient(session, i, uuids));
    for (const std::size_t position : dropUnusedClients(session))
        report.change("drop", "dropped", descriptions[position]);
}

void removeSelected(Session& session, const UnobserveArguments& arguments, const Output& output, ChangeReport& report) {
    const SignalUuids uuids(session);
    Positions positions = selectedClients(session, arguments.what, arguments.clients, output);
    for (const std::size_t position : positions)
        report.change("remove", "removed", describeClient(session, position, uuids));
    removeClients(session, std::move(positions));
}

void requireSense(const UnobserveArguments& arguments) {
    const bool isGiven = arguments.clients.isAnything() || !arguments.clients.types.empty();
    if (arguments.isUnused && (isGiven || isAnythingSelected(arguments.what)))
        throw Error("--unused asks the host about all clients; give it alone");
    requireSelection(arguments.what, isGiven || arguments.isUnused, "--client, --type, --state, --unused");
}

int runUnobserve(const UnobserveArguments& arguments, const Output& output) {
    requireSense(arguments);
    kshmi::enterHost(output.err);
    Session session(arguments.file);
    ChangeReport report(output, "unobserve", arguments.options, session);
    arguments.isUnused ? dropUnused(session, report) : removeSelected(session, arguments, output, report);
    return report.finish();
}

}  // namespace

void addUnobserve(CLI::App& app, Run& run) {
    const auto arguments = std::make_shared<UnobserveArguments>();
    CLI::App* const command =
        addCommand(app, "unobserve", "Remove clients and save the model; --type narrows what else is selected",
                   "  kshmi unobserve cruise.json Sensors/Speed:1 --type ks_scope_observer\n"
                   "  kshmi unobserve cruise.json --all 'Plant/*'\n"
                   "  kshmi unobserve cruise.json --client 3\n"
                   "  kshmi unobserve cruise.json --state foreign --state dangling\n"
                   "  kshmi unobserve cruise.json --unused --dry-run",
                   arguments->file);
    addSelection(*command, arguments->what);
    addClientSelection(*command, arguments->clients);
    command->add_flag("--unused", arguments->isUnused,
                      "what the host does not need: clients of deprecated kinds and those whose signal is gone");
    addChangeOptions(*command, arguments->options);
    runWith(*command, runUnobserve, arguments, run);
}

}  // namespace kshmi
