#include <fmt/format.h>

#include "kshmi/commands/command_options.h"
#include "kshmi/commands/commands.h"
#include "kshmi/commands/selecting.h"
#include "kshmi/print/change_report.h"
#include "workbench/change/marking.h"
#include "workbench/text/error.h"
#include "workbench/text/text.h"

namespace kshmi {

namespace {

using namespace workbench;

struct MarkArguments {
    std::string file;
    Selection selection;
    SignalSettings settings;
    bool isAgain = false;
    bool isDryRun = false;
};

struct Wanted {
    SignalSource source;
    std::u16string activity;  ///< of a chart item
};

std::vector<Wanted> wantedOf(const kestrel::Model& model, const Selection& selection, const Output& output) {
    if (!selection.all.empty() && !selection.options.activity.empty())
        throw Error("--all marks ports, and --activity is for chart items; name those as REF");
    std::vector<Wanted> wanted;
    for (const std::string& reference : selection.references) {
        SignalSource source = resolveReference(model, reference, selection.options);
        std::u16string activity = source.item ? activityFor(*source.item, selection.options) : std::u16string();
        wanted.push_back({std::move(source), std::move(activity)});
    }
    for (SignalSource& source : matchingSources(model, selection, Selectable::ports, output))
        wanted.push_back({std::move(source), {}});
    return wanted;
}

std::string describe(const kestrel::Model& model, const Wanted& wanted) {
    const std::string name = printable(fullName(model, wanted.source));
    if (wanted.source.item) return fmt::format("{} ({})", name, printable(wanted.activity));
    return fmt::format("{} ({})", name, printable(portName(wanted.source)));
}

int runMark(const MarkArguments& arguments, const Output& output) {
    requireSelection(arguments.selection, false);
    kshmi::enterHost(output.err);
    Session session(arguments.file);
    const std::vector<Wanted> wanted = wantedOf(session.model(), arguments.selection, output);
    ChangeReport report(output, arguments.isDryRun);
    for (const Wanted& one : wanted) {
        const std::string what = describe(session.model(), one);
        if (!arguments.isAgain && isMarked(session, one.source, one.activity)) {
            report.note("already marked " + what);
            continue;
        }
        addSignal(session, one.source, one.activity, arguments.settings);
        report.change("mark", "marked", fmt::format("{} as signal {}", what, session.signals().getCount()));
    }
    report.finish(session);
    return kSuccess;
}

constexpr std::uint32_t kLargest = std::numeric_limits<std::int32_t>::max();

void addSettings(CLI::App& command, SignalSettings& settings) {
    command.add_option("--name", settings.name, "signal name; the port's or chart item's name if left out");
    command.add_option("--decimation", settings.decimation, "keep every n-th sample")
        ->transform(wholeNumber(1, kLargest));
    command.add_option("--max-points", settings.maxPoints, "most points to keep, 0 for any number")
        ->transform(wholeNumber(0, kLargest));
    command.add_flag("--frame-based", settings.isFrameBased, "the signal is frame based");
    command.add_flag("--hide", settings.isHidden, "do not show it in the signal viewer");
    command.add_flag("--exclude-from-save", settings.isExcludedFromSave, "leave it out when the model is saved");
    command.add_flag("--buffered", settings.isBuffered, "stream it buffered from the target");
    command.add_option("--visual-type", settings.visualType, "kind of display that it feeds");
}

}  // namespace

void addMark(CLI::App& app, Run& run) {
    const auto arguments = std::make_shared<MarkArguments>();
    CLI::App* const command =
        addCommand(app, "mark", "Mark ports and chart items as signals and save the model",
                   "  kshmi mark cruise.json Sensors/Speed:1 --name speed --decimation 10\n"
                   "  kshmi mark cruise.json 'Control/Mode/Engaged' --activity Child\n"
                   "  kshmi mark cruise.json --all 'cruise/Sensors/*' --except '*:valid' --dry-run",
                   arguments->file);
    addReferences(*command, arguments->selection.references);
    addPatterns(*command, arguments->selection);
    addReferenceOptions(*command, arguments->selection.options);
    addSettings(*command, arguments->settings);
    command->add_flag("--again", arguments->isAgain, "add a further signal where one is");
    addDryRun(*command, arguments->isDryRun);
    runWith(*command, runMark, arguments, run);
}

}  // namespace kshmi
