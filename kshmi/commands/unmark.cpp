#include <fmt/format.h>

#include "kshmi/commands/command_options.h"
#include "kshmi/commands/commands.h"
#include "kshmi/commands/selecting.h"
#include "kshmi/print/change_report.h"
#include "kshmi/print/lost_clients.h"
#include "signals/signal_specification.h"
#include "workbench/change/marking.h"
#include "workbench/find/positions.h"
#include "workbench/find/signal_index.h"
#include "workbench/find/watching.h"
#include "workbench/text/error.h"
#include "workbench/text/text.h"

namespace kshmi {

namespace {

using namespace workbench;

struct UnmarkArguments {
    std::string file;
    Selection selection;
    bool isDangling = false;
    bool isDryRun = false;
};

Positions selected(const Session& session, const Selection& selection, const Output& output) {
    Positions positions;
    const SignalIndex index(session);
    for (const std::string& reference : selection.references) {
        const Positions found = index.on(reference, selection.options);
        if (found.empty()) throw Error(inQuotes(reference) + ": is not marked; \"kshmi show\" lists the signals");
        positions.insert(positions.end(), found.begin(), found.end());
    }
    for (const SignalSource& source : matchingSources(session.model(), selection, Selectable::portsAndItems, output)) {
        const Positions found = index.on(source, selection.options);
        positions.insert(positions.end(), found.begin(), found.end());
    }
    return positions;
}

std::string describe(const Session& session, std::size_t position) {
    const ks_hmi::SignalSpecification& signal = *session.signals().get(position);
    const SignalSource source = sourceOf(session.model(), signal);
    const std::string what =
        source.block ? printable(fullName(session.model(), source)) : printable(signal.m_blockPath) + " (gone)";
    return fmt::format("signal {}, {} on {}", position + 1, inQuotes(signal.m_signalName), what);
}

int runUnmark(const UnmarkArguments& arguments, const Output& output) {
    requireSelection(arguments.selection, arguments.isDangling);
    kshmi::enterHost(output.err);
    Session session(arguments.file, arguments.isDangling ? Session::Opening::lenient : Session::Opening::strict);
    Positions positions = selected(session, arguments.selection, output);
    for (const SignalFault& fault : session.dangling()) positions.push_back(fault.position);
    sortUnique(positions);

    ChangeReport report(output, arguments.isDryRun);
    for (const std::size_t position : positions) report.change("remove", "removed", describe(session, position));
    const DanglingWatch watch(session);
    removeSignals(session, std::move(positions));
    report.finish(session);
    warnOfLost(session, watch, arguments.isDryRun, output.err);
    return kSuccess;
}

}  // namespace

void addUnmark(CLI::App& app, Run& run) {
    const auto arguments = std::make_shared<UnmarkArguments>();
    CLI::App* const command =
        addCommand(app, "unmark", "Remove all signals on ports and chart items and save the model",
                   "  kshmi unmark cruise.json Sensors/Speed:1\n"
                   "  kshmi unmark cruise.json --all 'cruise/Plant/*'\n"
                   "  kshmi unmark cruise.json --dangling",
                   arguments->file);
    addReferences(*command, arguments->selection.references);
    addPatterns(*command, arguments->selection);
    addReferenceOptions(*command, arguments->selection.options);
    command->add_flag("--dangling", arguments->isDangling, "remove signals whose block, port or chart item is gone");
    addDryRun(*command, arguments->isDryRun);
    runWith(*command, runUnmark, arguments, run);
}

}  // namespace kshmi
