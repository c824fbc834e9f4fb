#include <fmt/format.h>

#include <algorithm>

#include "kshmi/commands/command_options.h"
#include "kshmi/commands/commands.h"
#include "kshmi/commands/selecting.h"
#include "kshmi/print/change_report.h"
#include "kshmi/print/lost_clients.h"
#include "workbench/change/observing.h"
#include "workbench/find/client_names.h"
#include "workbench/find/signal_index.h"
#include "workbench/find/watching.h"
#include "workbench/text/error.h"
#include "workbench/text/text.h"

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

// Of a chart item's signals, the first on the activity that is meant when none is said. When there is none, the first
// of all, if they agree on another.
std::size_t signalOnItem(const Session& session, const SignalSource& source, const Positions& found) {
    std::vector<std::u16string> activities;
    for (const std::size_t position : found) {
        std::u16string activity = activityOf(*session.signals().get(position));
        if (activity == defaultActivity(*source.item)) return position;
        if (std::find(activities.begin(), activities.end(), activity) == activities.end())
            activities.push_back(std::move(activity));
    }
    if (activities.size() == 1) return found.front();
    const std::string list = listed(activities, activities.size(), [](const auto& one) { return printable(one); });
    throw Error(fmt::format("{}: several activities are marked; give --activity with one of: {}",
                            inQuotes(fullName(session.model(), source)), list));
}

void requireMarked(const NamedSources& named, const ReferenceOptions& options, const SignalIndex& index,
                   const std::string& file) {
    const bool isMarked = std::any_of(named.sources.begin(), named.sources.end(),
                                      [&](const SignalSource& source) { return !index.on(source, options).empty(); });
    if (isMarked || named.sources.empty()) return;
    const Error error(fmt::format("{}: is not marked; mark it first with \"kshmi mark {} REF\"",
                                  inQuotes(named.reference.text), file));
    throw named.reference.place.file.empty() ? error : error.at(named.reference.place);
}

// One signal on each port and item, the first one where several are alike.
Positions signalsOf(const Session& session, const ObserveArguments& arguments, const Output& output) {
    const ReferenceOptions& options = arguments.what.selection.options;
    const SignalIndex index(session);
    const Selected selected = select(session.model(), arguments.what, output);
    for (const NamedSources& named : selected.named) requireMarked(named, options, index, arguments.file);
    Positions signals;
    for (const SignalSource& source : selected.sources()) {
        const Positions found = index.on(source, options);
        if (found.empty()) continue;
        const bool isActivityOpen = source.item && options.activity.empty();
        signals.push_back(isActivityOpen ? signalOnItem(session, source, found) : found.front());
    }
    for (const std::string& call : arguments.signals) signals.push_back(signalCalled(session, call));
    return signals;
}

int runObserve(const ObserveArguments& arguments, const Output& output) {
    const ClientSettings settings = settingsOf(arguments.client);
    requireSelection(arguments.what, !arguments.signals.empty(), "--signal");
    kshmi::enterHost(output.err);
    Session session(arguments.file);
    const SignalUuids uuids(session);
    ChangeReport report(output, "observe", arguments.options, session);
    const std::size_t before = session.clients().getCount();
    for (const std::size_t signal : signalsOf(session, arguments, output)) {
        addClient(session, signal, settings);
        const std::size_t position = session.clients().getCount() - 1;
        report.change("add", "added", describeClient(session, position, uuids));
    }
    const std::size_t count = session.clients().getCount();
    if (count > before) warnOfDeprecated(*session.clients().get(count - 1), arguments.file, output.err);
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
