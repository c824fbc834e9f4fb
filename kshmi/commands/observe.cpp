#include <fmt/format.h>

#include <algorithm>

#include "host/messages.h"
#include "kshmi/commands/command_options.h"
#include "kshmi/commands/commands.h"
#include "kshmi/print/change_report.h"
#include "workbench/change/observing.h"
#include "workbench/find/client_names.h"
#include "workbench/find/signal_index.h"
#include "workbench/find/watching.h"
#include "workbench/text/error.h"
#include "workbench/text/text.h"
#include "workbench/values/host_value_builder.h"

namespace kshmi {

namespace {

using namespace workbench;

struct ObserveArguments {
    std::string file;
    std::vector<std::string> references;
    ReferenceOptions options;
    std::string type;
    std::string params = "{}";  ///< JSON, as docs/model-file.md maps it
    std::uint32_t updateRate = 1;
    std::uint32_t channel = 1;
    bool isImaginary = false;
    std::string busLeaf;
    bool isDryRun = false;
};

HvArrayPtr valueOf(const std::string& json) {
    JsonFile text = JsonFile::ofText("--params", json);
    HostValueBuilder builder;
    try {
        text.read(builder);
    } catch (const Error& error) {
        if (!error.place().file.empty()) throw;
        text.fail(builder.pointer(), error.text());
    }
    return builder.take();
}

ClientSettings settingsOf(const ObserveArguments& arguments) {
    if (arguments.type.empty()) throw Error("--type \"\": name the kind of observer");
    ClientSettings settings;
    settings.type = arguments.type;
    settings.params = valueOf(arguments.params);
    settings.updateRate = arguments.updateRate;
    settings.channel = arguments.channel;
    settings.isImaginary = arguments.isImaginary;
    settings.busLeaf = arguments.busLeaf;
    return settings;
}

/// Of a chart item's signals, the first on the activity that is meant when none is said. When there is none, the first
/// of all, if they agree on another.
std::size_t signalOnItem(const Session& session, const std::string& reference, const ChartItem& item,
                         const std::vector<std::size_t>& found) {
    const auto activityAt = [&](std::size_t position) { return activityOf(*session.signals().get(position)); };
    std::vector<std::u16string> activities;
    for (const std::size_t position : found) {
        std::u16string activity = activityAt(position);
        if (activity == defaultActivity(item)) return position;
        if (std::find(activities.begin(), activities.end(), activity) == activities.end())
            activities.push_back(std::move(activity));
    }
    if (activities.size() == 1) return found.front();
    std::string list;
    for (const std::u16string& activity : activities) list += (list.empty() ? "" : ", ") + printable(activity);
    throw Error(inQuotes(reference) + ": several activities are marked; give --activity with one of: " + list);
}

/// The signal on each reference, the first one where several are alike.
std::vector<std::size_t> signalsOf(const Session& session, const ObserveArguments& arguments) {
    const SignalIndex index(session);
    std::vector<std::size_t> signals;
    for (const std::string& reference : arguments.references) {
        const SignalSource source = resolveReference(session.model(), reference, arguments.options);
        const std::vector<std::size_t> found = index.on(source, arguments.options);
        if (found.empty())
            throw Error(inQuotes(reference) + ": is not marked; mark it first with \"kshmi mark " + arguments.file +
                        " REF\"");
        const bool isActivityOpen = source.item && arguments.options.activity.empty();
        signals.push_back(isActivityOpen ? signalOnItem(session, reference, *source.item, found) : found.front());
    }
    return signals;
}

int runObserve(const ObserveArguments& arguments, const Output& output) {
    kshmi::enterHost(output.err);
    const ClientSettings settings = settingsOf(arguments);
    Session session(arguments.file);
    const SignalUuids uuids(session);
    ChangeReport report(output, arguments.isDryRun);
    for (const std::size_t signal : signalsOf(session, arguments)) {
        addClient(session, signal, settings);
        report.change("add", "added", describeClient(session, session.clients().getCount() - 1, uuids));
    }
    const std::size_t last = session.clients().getCount() - 1;
    if (session.clients().get(last)->isDeprecatedObserver())
        output.err << fmt::format(
            "warning: observers of the type {} are deprecated; validation drops them (\"kshmi unobserve {} "
            "--unused\")\n",
            inQuotes(settings.type), printable(std::string_view(arguments.file)));
    report.finish(session);
    return kSuccess;
}

}  // namespace

void addObserve(CLI::App& app, Run& run) {
    const auto arguments = std::make_shared<ObserveArguments>();
    CLI::App* const command =
        addCommand(app, "observe", "Let observers watch marked ports and chart items, and save the model",
                   "  kshmi observe cruise.json Sensors/Speed:1 --type ks_scope_observer\n"
                   "  kshmi observe cruise.json 'Set Speed:1' --type ks_gauge_observer --params '{\"max\": 180}'\n"
                   "  kshmi observe cruise.json Plant:1 --type ks_logger_observer --update-rate 10 --channel 2",
                   arguments->file);
    addReferences(*command, arguments->references)->required();
    addReferenceOptions(*command, arguments->options);
    command->add_option("--type", arguments->type, "kind of observer")->required();
    command->add_option("--params", arguments->params, "parameters as JSON, written as in a model file")
        ->type_name("JSON");
    command->add_option("--update-rate", arguments->updateRate, "update rate")->transform(wholeNumber());
    command->add_option("--channel", arguments->channel, "which element of the signal")->transform(wholeNumber());
    command->add_flag("--imaginary", arguments->isImaginary, "watch the imaginary part");
    command->add_option("--bus-leaf", arguments->busLeaf, "path of the leaf inside a bus signal")->type_name("PATH");
    addDryRun(*command, arguments->isDryRun);
    runWith(*command, runObserve, arguments, run);
}

}  // namespace kshmi
