#include <pybind11/stl.h>

#include <fmt/format.h>

#include <algorithm>
#include <unordered_set>

#include "python/native/json_text.h"
#include "python/native/open_model.h"
#include "workbench/change/observing.h"
#include "workbench/find/selecting_clients.h"
#include "workbench/find/signal_index.h"
#include "workbench/json/json_file.h"
#include "workbench/session/records.h"
#include "workbench/text/text.h"
#include "workbench/values/host_value_builder.h"

namespace ks_hmi_python {

using namespace workbench;

namespace {

HvArrayPtr valueOf(const std::string& json) {
    HostValueBuilder builder;
    try {
        JsonFile::ofText("params", json).read(builder);
    } catch (const Error& error) {
        throw error.at({"params", 0, builder.pointer()});
    }
    return builder.take();
}

template <class Value>
void take(const py::dict& given, const char* name, std::optional<Value>& setting) {
    if (given.contains(name)) setting = given[name].cast<Value>();
}

ClientSettings settingsOf(const py::dict& given) {
    ClientSettings settings;
    take(given, "type", settings.type);
    if (settings.type && settings.type->empty()) throw Error("the kind of client is empty; name it");
    if (given.contains("params")) settings.params = valueOf(given["params"].cast<std::string>());
    take(given, "updateRate", settings.updateRate);
    take(given, "channel", settings.channel);
    take(given, "imaginary", settings.isImaginary);
    take(given, "busLeaf", settings.busLeaf);
    return settings;
}

// Of a chart item's signals, the first on the activity that is meant when none is said. When there is none, the first
// of all, if they agree on another.
std::size_t signalOnItem(const Session& session, const SignalSource& source, const Positions& found) {
    const auto activity = [&](std::size_t position) { return activityOf(*session.signals().get(position)); };
    const auto usual = std::ranges::find_if(
        found, [&](std::size_t position) { return activity(position) == defaultActivity(*source.item); });
    if (usual != found.end()) return *usual;
    const auto other = std::ranges::find_if(
        found, [&](std::size_t position) { return activity(position) != activity(found.front()); });
    if (other == found.end()) return found.front();
    throw Error(fmt::format("{}: several activities are marked, such as {} and {}; say which as activity=",
                            inQuotes(fullName(session.model(), source)), printable(activity(found.front())),
                            printable(activity(*other))));
}

void requireMarked(const NamedSources& named, const ReferenceOptions& options, const SignalIndex& index) {
    const bool isMarked = std::ranges::any_of(
        named.sources, [&](const SignalSource& source) { return !index.on(source, options).empty(); });
    if (!isMarked && !named.sources.empty())
        throw Error(inQuotes(named.reference.text) + ": is not marked; mark it first");
}

// One signal on each port and item, the first one where several are alike.
Positions signalsMeant(const Session& session, const Chosen& chosen, const std::vector<std::string>& calls) {
    const SignalIndex index(session);
    for (const NamedSources& named : chosen.selected.named) requireMarked(named, chosen.options, index);
    Positions signals;
    for (const SignalSource& source : chosen.selected.sources()) {
        const Positions found = index.on(source, chosen.options);
        if (found.empty()) continue;
        const bool isActivityOpen = source.item && chosen.options.activity.empty();
        signals.push_back(isActivityOpen ? signalOnItem(session, source, found) : found.front());
    }
    for (const std::string& call : calls) signals.push_back(signalCalled(session, call));
    return signals;
}

void takeBack(Session& session, std::size_t before) {
    Positions added;
    for (std::size_t i = before; i < session.clients().getCount(); ++i) added.push_back(i);
    removeClients(session, added);
}

std::string observe(OpenModel& model, const py::dict& selection, const std::vector<std::string>& calls,
                    const py::dict& given) {
    Session& session = model.session();
    const ClientSettings settings = settingsOf(given);
    const std::size_t before = session.clients().getCount();
    try {
        for (const std::size_t signal : signalsMeant(session, choose(session, selection), calls))
            addClient(session, signal, settings);
    } catch (...) {
        takeBack(session, before);
        throw;
    }
    ChangeText text;
    const SignalUuids uuids(session);
    for (std::size_t i = before; i < session.clients().getCount(); ++i)
        appendClientThing(text.added(), session, i, uuids);
    return text.take("observe", session);
}

ClientSelection clientSelectionOf(const py::dict& given) {
    constexpr ClientState kStates[] = {ClientState::watching, ClientState::dangling, ClientState::elsewhere,
                                       ClientState::foreign};
    ClientSelection selection;
    selection.calls = given["clients"].cast<std::vector<std::string>>();
    selection.types = given["types"].cast<std::vector<std::string>>();
    for (const auto& word : given["states"].cast<std::vector<std::string>>()) {
        const auto state = std::ranges::find_if(kStates, [&](ClientState one) { return word == nameOf(one); });
        if (state != std::end(kStates))
            selection.states.push_back(*state);
        else if (word == "deprecated")
            selection.isDeprecated = true;
        else
            throw Error(inQuotes(word) + " is no state; there are: watching, dangling, elsewhere, foreign, deprecated");
    }
    return selection;
}

Positions clientsMeant(const Session& session, const py::dict& selection, const py::dict& clients) {
    const Chosen chosen = choose(session, selection);
    const bool isOfSignals = !chosen.selected.named.empty() || !chosen.selected.matching.empty();
    return selectClients(session, isOfSignals ? &chosen.selected : nullptr, chosen.options, clientSelectionOf(clients));
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

std::string setClients(OpenModel& model, const py::dict& selection, const py::dict& clients, const py::dict& given) {
    Session& session = model.session();
    const ClientSettings settings = settingsOf(given);
    if (!settings.isAny()) throw Error("nothing to set; give update_rate=, params= or another setting");
    const Positions positions = clientsMeant(session, selection, clients);
    const Positions changed = changeClients(session, positions, settings);
    ChangeText text;
    const SignalUuids uuids(session);
    for (const std::size_t position : positions)
        appendClientThing(std::ranges::binary_search(changed, position) ? text.changed() : text.unchanged(), session,
                          position, uuids);
    return text.take("set", session);
}

}  // namespace

void bindObserving(py::module_& module) {
    module.def("observe", [](OpenModel& model, const py::dict& selection, const std::vector<std::string>& calls,
                             const py::dict& settings) {
        return inHost([&] { return observe(model, selection, calls, settings); });
    });
    module.def("unobserve", [](OpenModel& model, const py::dict& selection, const py::dict& clients) {
        return inHost([&] { return unobserve(model, selection, clients); });
    });
    module.def("setClients",
               [](OpenModel& model, const py::dict& selection, const py::dict& clients, const py::dict& settings) {
                   return inHost([&] { return setClients(model, selection, clients, settings); });
               });
}

}  // namespace ks_hmi_python
