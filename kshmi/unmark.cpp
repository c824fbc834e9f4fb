#include <fmt/format.h>

#include "kshmi/change_report.h"
#include "kshmi/commands.h"
#include "kshmi/error.h"
#include "kshmi/host_process.h"
#include "kshmi/observing.h"
#include "kshmi/selecting.h"
#include "kshmi/signal_index.h"
#include "kshmi/text.h"

namespace kshmi {

namespace {

Positions selected(const Session& session, const Selection& selection, const Output& output) {
    Positions positions;
    const SignalIndex index(session);
    for (const std::string& reference : selection.references) {
        const Positions found = index.on(reference, selection.options);
        if (found.empty()) throw Error(quoted(reference) + ": is not marked; \"kshmi show\" lists the signals");
        positions.insert(positions.end(), found.begin(), found.end());
    }
    for (const SignalSource& source : selectMatching(session.model(), selection, Selectable::portsAndItems, output)) {
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
    return fmt::format("signal {}, {} on {}", position + 1, quoted(signal.m_signalName), what);
}

}  // namespace

int runUnmark(const UnmarkArguments& arguments, const Output& output) {
    requireSelection(arguments.selection, arguments.isDangling);
    enterHost(output.err);
    Session session(arguments.file, arguments.isDangling ? Session::Opening::lenient : Session::Opening::strict);
    Positions positions = selected(session, arguments.selection, output);
    for (const SignalFault& fault : session.dangling()) positions.push_back(fault.position);
    sortUnique(positions);

    ChangeReport report(output, arguments.isDryRun);
    for (const std::size_t position : positions) report.change("remove", "removed", describe(session, position));
    const DanglingWatch watch(session);
    removeSignals(session, std::move(positions));
    report.finish(session);
    watch.warn(output, arguments.isDryRun);
    return kSuccess;
}

}  // namespace kshmi
