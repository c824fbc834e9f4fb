#include <fmt/format.h>

#include "kshmi/commands/command_options.h"
#include "kshmi/commands/commands.h"
#include "kshmi/commands/selecting.h"
#include "kshmi/print/json/json_records.h"
#include "kshmi/print/reports/change_report.h"
#include "workbench/change/mark_target.h"
#include "workbench/change/marking.h"
#include "workbench/text/error.h"
#include "workbench/text/text.h"

namespace kshmi {

namespace {

using namespace workbench;

struct MarkArguments {
    std::string file;
    SelectionArguments what;
    SignalSettings settings;
    bool isAgain = false;
    bool isMarkedSkipped = false;
    ChangeOptions options;
};

std::string describe(const kestrel::Model& model, const MarkTarget& wanted) {
    const std::string name = printable(fullName(model, wanted.source));
    if (wanted.source.item) return fmt::format("{} ({})", name, printable(*wanted.activity));
    return fmt::format("{} ({})", name, printable(portName(wanted.source)));
}

// Settings are for new signals: what is marked would not get them.
void requireUnmarked(const Session& session, const std::vector<MarkTarget>& wanted) {
    std::size_t count = 0;
    const MarkTarget* first = nullptr;
    for (const MarkTarget& one : wanted) {
        if (one.isMarked && count++ == 0) first = &one;
    }
    if (count == 0) return;
    const std::string others = count > 1 ? fmt::format(" and {} more are", count - 1) : " is";
    throw Error(
        fmt::format("{}{} marked already; \"kshmi set\" changes the settings, --skip-marked marks only the "
                    "others, --again adds a further signal",
                    describe(session.model(), *first), others));
}

void keep(const Session& session, const MarkTarget& wanted, Fate fate, ChangeReport& report) {
    report.keep(fate, "already marked " + describe(session.model(), wanted), [&](JsonObject& object) {
        object.text("kind", std::string_view("signal"));
        appendSource(object, session.model(), wanted.source);
        if (wanted.source.item) object.text("activity", *wanted.activity);
    });
}

// What is wanted is forgotten before anything is saved: of many ports it takes as much room as saving.
void markWanted(Session& session, const MarkArguments& arguments, const Output& output, ChangeReport& report) {
    const std::vector<MarkTarget> wanted =
        markTargets(session, select(session.model(), arguments.what, output).sources(),
                    arguments.what.selection.options, arguments.isAgain);
    if (arguments.settings.isAny() && !arguments.isMarkedSkipped) requireUnmarked(session, wanted);
    std::size_t position = session.signals().getCount();
    addSignals(session, wanted, arguments.settings);
    for (const MarkTarget& one : wanted) {
        if (one.isMarked) {
            keep(session, one, arguments.settings.isAny() ? Fate::skipped : Fate::unchanged, report);
            continue;
        }
        ++position;
        report.change("mark", "marked",
                      [&] { return fmt::format("{} as signal {}", describe(session.model(), one), position); });
    }
}

int runMark(const MarkArguments& arguments, const Output& output) {
    requireSelection(arguments.what, false);
    kshmi::enterHost(output.err);
    Session session(arguments.file);
    ChangeReport report(output, "mark", arguments.options, session);
    markWanted(session, arguments, output, report);
    if (arguments.settings.isExcludedFromSave.value_or(false))
        output.err << "kshmi: warning: the saved file does not have what is excluded from saving; without "
                      "--exclude-from-save it does\n";
    return report.finish();
}

}  // namespace

void addMark(CLI::App& app, Run& run) {
    const auto arguments = std::make_shared<MarkArguments>();
    CLI::App* const command = addCommand(app, "mark", "Mark ports and chart items as signals and save the model",
                                         "  kshmi mark cruise.json Sensors/Pedal:1 --name pedal --decimation 10\n"
                                         "  kshmi mark cruise.json 'Control/Mode/Engaged' --activity Child\n"
                                         "  kshmi mark cruise.json --all 'Sensors/*' --except '*:valid' --dry-run\n"
                                         "  kshmi mark cruise.json --all '*' --kind state",
                                         arguments->file);
    addSelection(*command, arguments->what);
    addSettings(*command, arguments->settings);
    command->add_flag("--again", arguments->isAgain, "add a further signal where one is");
    command->add_flag("--skip-marked", arguments->isMarkedSkipped,
                      "with settings: leave alone what is marked already, in place of refusing");
    addChangeOptions(*command, arguments->options);
    runWith(*command, runMark, arguments, run);
}

}  // namespace kshmi
