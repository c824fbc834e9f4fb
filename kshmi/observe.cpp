#include <fmt/format.h>

#include <algorithm>

#include "host/messages.h"
#include "kshmi/change_report.h"
#include "kshmi/commands.h"
#include "kshmi/error.h"
#include "kshmi/host_process.h"
#include "kshmi/host_value_builder.h"
#include "kshmi/observing.h"
#include "kshmi/signal_index.h"
#include "kshmi/text.h"

namespace kshmi {

namespace {

HvArrayPtr valueOf(const std::string& json) {
    JsonFile text = JsonFile::ofText("--params", json);
    HostValueBuilder builder;
    try {
        text.read(builder);
    } catch (const Error& error) {
        const std::string_view what = error.what();
        if (what.starts_with("--params")) throw;
        text.fail(builder.pointer(), error.what());
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
    throw Error(quoted(reference) + ": several activities are marked; give --activity with one of: " + list);
}

/// The signal on each reference, the first one where several are alike.
std::vector<std::size_t> signalsOf(const Session& session, const ObserveArguments& arguments) {
    const SignalIndex index(session);
    std::vector<std::size_t> signals;
    for (const std::string& reference : arguments.references) {
        const SignalSource source = resolveReference(session.model(), reference, arguments.options);
        const std::vector<std::size_t> found = index.on(source, arguments.options);
        if (found.empty())
            throw Error(quoted(reference) + ": is not marked; mark it first with \"kshmi mark " + arguments.file +
                        " REF\"");
        const bool isActivityOpen = source.item && arguments.options.activity.empty();
        signals.push_back(isActivityOpen ? signalOnItem(session, reference, *source.item, found) : found.front());
    }
    return signals;
}

}  // namespace

int runObserve(const ObserveArguments& arguments, const Output& output) {
    enterHost(output.err);
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
            quoted(settings.type), printable(std::string_view(arguments.file)));
    report.finish(session);
    return kSuccess;
}

}  // namespace kshmi
