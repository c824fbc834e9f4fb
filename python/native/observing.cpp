#include <fmt/format.h>

#include <algorithm>

#include "python/native/arguments.h"
#include "python/native/define.h"
#include "python/native/json_text.h"
#include "python/native/open_model.h"
#include "python/native/watched_change.h"
#include "workbench/change/observing.h"
#include "workbench/find/client_names.h"
#include "workbench/find/selecting_clients.h"
#include "workbench/text/text.h"
#include "workbench/values/host_value_builder.h"

namespace ks_hmi_python {

using namespace workbench;

namespace {

ClientSettings clientSettingsOf(const py::dict& given) {
    ClientSettings settings;
    settings.type = textIn(given, "type");
    if (settings.type && settings.type->empty()) throw Error("the kind of client is empty; name it");
    if (const auto params = textIn(given, "params")) settings.params = hostValueOf("params=", *params);
    takeNumber(given, "update_rate", 0, kLargestUint, settings.updateRate);
    takeNumber(given, "channel", 0, kLargestUint, settings.channel);
    settings.isImaginary = truthIn(given, "imaginary");
    settings.busLeaf = textIn(given, "bus_leaf");
    return settings;
}

// A validation drops them.
void warnOfDeprecated(const Session& session, const Positions& positions) {
    const auto deprecated = std::ranges::find_if(
        positions, [&](std::size_t position) { return session.clients().get(position)->isDeprecatedObserver(); });
    if (deprecated == positions.end()) return;
    warn(fmt::format("clients of the type {} are deprecated; validation drops them, as unobserve(unused=True) does",
                     inQuotes(std::string_view(session.clients().get(*deprecated)->m_observerType))));
}

std::string observe(OpenModel& model, const py::dict& selection, const std::vector<std::string>& calls,
                    const py::dict& given) {
    Session& session = model.session();
    const ClientSettings settings = clientSettingsOf(given);
    const Chosen chosen = choose(session, selection);
    const Positions added =
        addClients(session, signalsToWatch(session, chosen.selected, chosen.options, calls), settings);
    ChangeText text;
    const SignalUuids uuids(session);
    for (const std::size_t position : added) appendClientThing(text.added(), session, position, uuids);
    warnOfDeprecated(session, added);
    return text.take("observe", session);
}

ClientSelection clientSelectionOf(const py::dict& given) {
    ClientSelection selection;
    selection.calls = given["clients"].cast<std::vector<std::string>>();
    selection.types = given["types"].cast<std::vector<std::string>>();
    for (const auto& word : given["states"].cast<std::vector<std::string>>())
        if (!selection.addState(word))
            throw Error(inQuotes(word) + " is not a state; there are: " + listedWords(kClientStates));
    return selection;
}

Positions clientsMeant(const Session& session, const py::dict& selection, const py::dict& clients) {
    const Chosen chosen = choose(session, selection);
    return selectClients(session, chosen.isAsked ? &chosen.selected : nullptr, chosen.options,
                         clientSelectionOf(clients));
}

std::string unobserve(OpenModel& model, const py::dict& selection, const py::dict& clients) {
    Session& session = model.session();
    Positions positions = clientsMeant(session, selection, clients);
    ChangeText text;
    const SignalUuids uuids(session);
    for (const std::size_t position : positions) appendClientThing(text.removed(), session, position, uuids);
    removeClients(session, std::move(positions));
    return text.take("unobserve", session);
}

std::string dropUnused(OpenModel& model) {
    WatchedChange change(model.session());
    dropUnusedClients(model.session());
    return change.take("unobserve");
}

std::string setClients(OpenModel& model, const py::dict& selection, const py::dict& clients, const py::dict& given) {
    Session& session = model.session();
    const ClientSettings settings = clientSettingsOf(given);
    if (!settings.isAny()) throw Error("nothing to set; give update_rate=, params= or another setting");
    const Positions positions = clientsMeant(session, selection, clients);
    const Positions changed = changeClients(session, positions, settings);
    ChangeText text;
    const SignalUuids uuids(session);
    for (const std::size_t position : positions)
        appendClientThing(std::ranges::binary_search(changed, position) ? text.changed() : text.unchanged(), session,
                          position, uuids);
    if (settings.type) warnOfDeprecated(session, changed);
    return text.take("set", session);
}

}  // namespace

void warnOfLost(const Session& session, const DanglingWatch& watch) {
    const Positions lost = watch.lost();
    if (lost.empty()) return;
    constexpr std::size_t kMostNamed = 5;
    const auto nameOf = [&](std::size_t position) { return nameOfClient(session, position); };
    warn(fmt::format("left without a signal: {}; unobserve(states=\"dangling\") removes {}",
                     listed(lost, kMostNamed, nameOf), lost.size() == 1 ? "it" : "them"));
}

void bindObserving(py::module_& module) {
    define(module, "observe", observe);
    define(module, "unobserve", unobserve);
    define(module, "dropUnused", dropUnused);
    define(module, "setClients", setClients);
}

}  // namespace ks_hmi_python
