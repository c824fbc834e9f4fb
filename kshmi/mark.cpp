#include <fmt/format.h>

#include "kshmi/change_report.h"
#include "kshmi/commands.h"
#include "kshmi/error.h"
#include "kshmi/host_process.h"
#include "kshmi/selecting.h"
#include "kshmi/text.h"

namespace kshmi {

namespace {

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
    for (SignalSource& source : selectMatching(model, selection, Selectable::ports, output))
        wanted.push_back({std::move(source), {}});
    return wanted;
}

std::string describe(const kestrel::Model& model, const Wanted& wanted) {
    const std::string name = printable(fullName(model, wanted.source));
    if (wanted.source.item) return fmt::format("{} ({})", name, printable(wanted.activity));
    return fmt::format("{} ({})", name, printable(portName(wanted.source)));
}

}  // namespace

int runMark(const MarkArguments& arguments, const Output& output) {
    requireSelection(arguments.selection, false);
    enterHost(output.err);
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

}  // namespace kshmi
