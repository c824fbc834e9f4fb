#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "kshmi/print/reports/name_notice.h"
#include "python/native/arguments.h"
#include "python/native/define.h"
#include "python/native/json_text.h"
#include "python/native/open_model.h"
#include "workbench/change/mark_target.h"
#include "workbench/change/marking.h"
#include "workbench/find/asking.h"
#include "workbench/text/text.h"

namespace ks_hmi_python {

using namespace workbench;

namespace {

SignalSettings settingsOf(const py::dict& given) {
    SignalSettings settings;
    settings.name = textIn(given, "name");
    takeNumber(given, "decimation", 1, kLargestInt, settings.decimation);
    takeNumber(given, "max_points", 0, kLargestInt, settings.maxPoints);
    settings.isFrameBased = truthIn(given, "frame_based");
    settings.isHidden = truthIn(given, "hidden");
    settings.isExcludedFromSave = truthIn(given, "excluded_from_save");
    settings.isBuffered = truthIn(given, "buffered");
    settings.visualType = textIn(given, "visual_type");
    return settings;
}

void appendWanted(std::string& out, const Session& session, const MarkTarget& wanted) {
    JsonObject object(out);
    object.text("kind", std::string_view("signal"));
    kshmi::appendSource(object, session.model(), wanted.source);
    if (wanted.source.item) object.text("activity", *wanted.activity);
    object.close();
}

// Settings are for new signals: what is marked would not get them.
void requireUnmarked(const Session& session, const std::vector<MarkTarget>& wanted) {
    const auto first = std::ranges::find_if(wanted, &MarkTarget::isMarked);
    if (first == wanted.end()) return;
    throw Error(
        fmt::format("{} is marked already; set() changes the settings, skip_marked=True marks only the others, "
                    "again=True adds a further signal",
                    printable(fullName(session.model(), first->source))));
}

std::string mark(OpenModel& model, const py::dict& selection, const py::dict& given, bool isAgain,
                 bool isMarkedSkipped) {
    Session& session = model.session();
    const SignalSettings settings = settingsOf(given);
    const Chosen chosen = choose(session, selection);
    const std::vector<MarkTarget> wanted = markTargets(session, chosen.selected.sources(), chosen.options, isAgain);
    if (settings.isAny() && !isMarkedSkipped) requireUnmarked(session, wanted);
    ChangeText text;
    std::size_t position = session.signals().getCount();
    addSignals(session, wanted, settings);
    for (const MarkTarget& one : wanted) {
        if (one.isMarked)
            appendWanted(settings.isAny() ? text.skipped() : text.unchanged(), session, one);
        else
            appendSignalThing(text.added(), session, position++);
    }
    return text.take("mark", session);
}

Positions signalsMeant(Session& session, const py::dict& selection, const std::vector<std::string>& calls) {
    const Chosen chosen = choose(session, selection);
    Positions positions = signalsOn(session, chosen.selected, chosen.options);
    for (const std::string& call : calls) positions.push_back(signalCalled(session, call));
    return positions;
}

std::string unmark(OpenModel& model, const py::dict& selection, const std::vector<std::string>& calls,
                   bool isDangling) {
    Session& session = model.session();
    Positions positions = signalsMeant(session, selection, calls);
    if (isDangling)
        for (const SignalFault& fault : faultsOf(session.signals(), session.model()))
            if (fault.isDangling) positions.push_back(fault.position);
    sortUnique(positions);
    ChangeText text;
    for (const std::size_t position : positions) appendSignalThing(text.removed(), session, position);
    const DanglingWatch watch(session);
    removeSignals(session, std::move(positions));
    const SignalUuids uuids(session);
    for (const std::size_t position : watch.lost()) appendClientThing(text.changed(), session, position, uuids);
    warnOfLost(session, watch);
    return text.take("unmark", session);
}

std::string set(OpenModel& model, const py::dict& selection, const std::vector<std::string>& calls,
                const py::dict& given, bool isConfirmed) {
    Session& session = model.session();
    const SignalSettings settings = settingsOf(given);
    if (!settings.isAny() && !isConfirmed)
        throw Error("nothing to set; give name=, decimation= or another setting, or confirm=True");
    Positions positions = signalsMeant(session, selection, calls);
    sortUnique(positions);
    Positions changed;
    if (settings.isAny()) changed = changeSignals(session, positions, settings);
    if (isConfirmed) std::ranges::copy(session.names().confirm(positions), std::back_inserter(changed));
    sortUnique(changed);
    ChangeText text;
    for (const std::size_t position : positions)
        appendSignalThing(std::ranges::binary_search(changed, position) ? text.changed() : text.unchanged(), session,
                          position);
    return text.take("set", session);
}

std::string query(OpenModel& model, const py::dict& selection) {
    const Session& session = model.session();
    const Chosen chosen = choose(session, selection);
    kshmi::JsonEntry entry;
    entry.object().text("file", std::string_view(session.path())).text("model", session.model().name());
    kshmi::listUnsettled(entry, session);
    entry.list("answers", chosen.selected.sources(), [&](const SignalSource& source) {
        JsonObject answer(entry.text());
        kshmi::appendAnswer(answer, session.model(), ask(session, source, chosen.options));
        answer.close();
    });
    kshmi::JsonDocument document("query");
    document.list("files", std::array{entry.take()}, [&](const std::string& file) { document.text() += file; });
    return textOf(document);
}

}  // namespace

void bindMarking(py::module_& module) {
    define(module, "mark", mark);
    define(module, "unmark", unmark);
    define(module, "set", set);
    define(module, "query", query);
}

}  // namespace ks_hmi_python
