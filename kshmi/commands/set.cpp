#include <fmt/format.h>

#include <algorithm>
#include <unordered_set>

#include "kshmi/commands/command_options.h"
#include "kshmi/commands/commands.h"
#include "kshmi/commands/selecting.h"
#include "kshmi/print/json/json_records.h"
#include "kshmi/print/reports/change_report.h"
#include "kshmi/print/reports/lost_clients.h"
#include "signals/signal_specification.h"
#include "workbench/change/marking.h"
#include "workbench/change/observing.h"
#include "workbench/find/client_names.h"
#include "workbench/session/records.h"
#include "workbench/text/error.h"
#include "workbench/text/text.h"

namespace kshmi {

namespace {

using namespace workbench;

struct SetArguments {
    std::string file;
    SelectionArguments what;
    std::vector<std::string> signals;  // UUIDs and positions
    SignalSettings settings;
    std::vector<std::string> clients;  // UUIDs and positions
    bool isOfClients = false;          // all clients of the signals
    std::vector<std::string> types;    // only these
    ClientArguments client;
    bool isConfirmed = false;
    ChangeOptions options;
};

void requireSense(const SetArguments& arguments, const ClientSettings& client) {
    const bool isOfSignals = isAnythingSelected(arguments.what) || !arguments.signals.empty();
    const bool isOfClients = arguments.isOfClients || !arguments.clients.empty();
    if (!arguments.settings.isAny() && !client.isAny() && !arguments.isConfirmed)
        throw Error("nothing to set; give --name, --decimation, --update-rate or another setting, or --confirm");
    requireSelection(arguments.what, !arguments.signals.empty() || !arguments.clients.empty(), "--signal, --client");
    if (client.isAny() && !isOfClients)
        throw Error(
            "--params, --update-rate and what else is said of clients need --clients, for all clients of what "
            "is selected, or --client");
    if (!client.isAny() && isOfClients)
        throw Error("--clients and --client select clients; say what to set of them, such as --update-rate");
    if ((arguments.settings.isAny() || arguments.isConfirmed) && !isOfSignals)
        throw Error(
            "--confirm, --name, --decimation and what else is said of signals need a signal; name a REF or give "
            "--signal");
    if (arguments.isOfClients && !isOfSignals)
        throw Error("--clients means the clients of what is selected; name a REF or give --signal");
}

Positions signalsOf(const Session& session, const SetArguments& arguments, const Output& output) {
    Positions positions =
        signalsOn(session, select(session.model(), arguments.what, output), arguments.what.selection.options);
    for (const std::string& call : arguments.signals) positions.push_back(signalCalled(session, call));
    sortUnique(positions);
    return positions;
}

std::unordered_set<std::string> uuidsOf(const Session& session, const Positions& signals) {
    std::unordered_set<std::string> uuids;
    for (const std::size_t position : signals) uuids.insert(session.signals().get(position)->m_uuid);
    return uuids;
}

Positions clientsOf(const Session& session, const SetArguments& arguments, const Positions& signals) {
    Positions positions;
    const auto uuids = uuidsOf(session, signals);
    const auto& types = arguments.types;
    if (arguments.isOfClients)
        positions = positionsWhere(session.clients(), [&](const ks_hmi::SignalClient& client) {
            const bool isOfType =
                types.empty() || std::find(types.begin(), types.end(), client.m_observerType) != types.end();
            return isOfType && uuids.contains(client.m_signalUUID);
        });
    for (const std::string& call : arguments.clients) positions.push_back(clientCalled(session, call));
    sortUnique(positions);
    return positions;
}

// Tells of each position what became of it; `changed` are those that are otherwise now.
template <class Describe>
void tell(const Positions& positions, const Positions& changed, ChangeReport& report, Describe describe) {
    for (const std::size_t position : positions) {
        if (std::binary_search(changed.begin(), changed.end(), position))
            report.change("change", "changed", describe(position));
        else
            report.note("already so: " + describe(position));
    }
}

Positions setSignals(Session& session, const Positions& positions, const SignalSettings& settings,
                     ChangeReport& report) {
    Positions changed = changeSignals(session, positions, settings);
    tell(positions, changed, report, [&](std::size_t position) { return describeSignal(session, position); });
    return changed;
}

// What settles marks one by one leaves the others unsettled.
Positions confirm(Session& session, const Positions& positions, ChangeReport& report) {
    session.keepUnsettledNames();
    NameChecker checker(session.model());
    const auto describe = [&](std::size_t position) {
        return fmt::format("{}, marked as {}", describeSignal(session, position),
                           inQuotes(checker.nameNow(*session.signals().get(position)).value_or(u"")));
    };
    Positions confirmed = session.names().confirm(positions);
    for (const std::size_t position : positions) {
        if (std::binary_search(confirmed.begin(), confirmed.end(), position))
            report.change("confirm", "confirmed", describe(position));
        else
            report.note("already confirmed: " + describeSignal(session, position));
    }
    return confirmed;
}

void changeSelected(Session& session, const Positions& signals, const SetArguments& arguments, ChangeReport& report) {
    Positions changed;
    if (arguments.isConfirmed) changed = confirm(session, signals, report);
    if (arguments.settings.isAny()) {
        const Positions set = setSignals(session, signals, arguments.settings, report);
        changed.insert(changed.end(), set.begin(), set.end());
    }
    sortUnique(changed);
    for (const std::size_t position : signals)
        if (!std::binary_search(changed.begin(), changed.end(), position))
            report.list(Fate::unchanged, [&](JsonObject& object) {
                object.text("kind", std::string_view("signal"));
                appendSignal(object, session, position);
            });
}

void setClients(Session& session, const Positions& positions, const ClientSettings& settings, ChangeReport& report) {
    const Positions changed = changeClients(session, positions, settings);
    const SignalUuids uuids(session);
    tell(positions, changed, report, [&](std::size_t position) { return describeClient(session, position, uuids); });
    for (const std::size_t position : positions)
        if (!std::binary_search(changed.begin(), changed.end(), position))
            report.list(Fate::unchanged, [&](JsonObject& object) {
                object.text("kind", std::string_view("client"));
                appendClient(object, *session.clients().get(position), position, session, uuids);
            });
}

void warnOfExcluded(const Session& session, const Positions& signals, std::ostream& err) {
    const auto uuids = uuidsOf(session, signals);
    std::size_t clients = 0;
    for (const ks_hmi::SignalClient& client : recordsOf(session.clients()))
        clients += uuids.contains(client.m_signalUUID) ? 1U : 0U;
    if (clients > 0)
        err << fmt::format(
            "kshmi: warning: {} watched what is excluded from saving and will find no signal in the file\n",
            counted(clients, "client"));
}

int runSet(const SetArguments& arguments, const Output& output) {
    const ClientSettings client = settingsOf(arguments.client);
    requireSense(arguments, client);
    kshmi::enterHost(output.err);
    Session session(arguments.file);
    const Positions signals = signalsOf(session, arguments, output);
    const Positions clients = clientsOf(session, arguments, signals);
    ChangeReport report(output, "set", arguments.options, session);
    if (arguments.isConfirmed || arguments.settings.isAny()) changeSelected(session, signals, arguments, report);
    if (client.isAny()) setClients(session, clients, client, report);
    if (client.type && !clients.empty())
        warnOfDeprecated(*session.clients().get(clients.front()), arguments.file, output.err);
    if (arguments.settings.isExcludedFromSave.value_or(false) && !signals.empty())
        warnOfExcluded(session, signals, output.err);
    return report.finish();
}

}  // namespace

void addSet(CLI::App& app, Run& run) {
    const auto arguments = std::make_shared<SetArguments>();
    CLI::App* const command =
        addCommand(app, "set", "Change the settings of signals and clients in place and save the model",
                   "  kshmi set cruise.json Sensors/Speed:1 --decimation 10 --name speed\n"
                   "  kshmi set cruise.json --all 'Sensors/*' --hide\n"
                   "  kshmi set cruise.json Sensors/Speed:1 --clients --update-rate 5\n"
                   "  kshmi set cruise.json --all '*' --confirm\n"
                   "  kshmi set cruise.json --client 2 --params '{\"max\": 180}'",
                   arguments->file);
    addSelection(*command, arguments->what);
    command->add_option("--signal", arguments->signals, "the signal with this UUID or position; may be repeated")
        ->allow_extra_args(false);
    addSettings(*command, arguments->settings);
    command->add_flag("--confirm", arguments->isConfirmed,
                      "what the signals are on is what was meant, whatever it is called now");
    command->add_option("--client", arguments->clients, "the client with this UUID or position; may be repeated")
        ->allow_extra_args(false);
    command->add_flag("--clients", arguments->isOfClients, "all clients of the signals that are selected");
    command->add_option("--type", arguments->types, "of --clients only those of this kind; may be repeated")
        ->allow_extra_args(false);
    addClientSettings(*command, arguments->client);
    command->add_option("--new-type", arguments->client.type, "kind of client");
    addChangeOptions(*command, arguments->options);
    runWith(*command, runSet, arguments, run);
}

}  // namespace kshmi
