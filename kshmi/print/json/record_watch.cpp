#include "kshmi/print/json/record_watch.h"

#include <cstddef>
#include <string_view>
#include <unordered_map>

#include "kshmi/print/json/json_records.h"
#include "workbench/find/watching.h"
#include "workbench/json/json_object.h"
#include "workbench/session/records.h"
#include "workbench/session/signal_source.h"

namespace kshmi {

using namespace workbench;

namespace {

using ks_hmi::SignalClient;
using ks_hmi::SignalSpecification;

std::u16string placeOf(const kestrel::Model& model, const SignalSpecification& signal) {
    const SignalSource source = sourceOf(model, signal);
    return source.block ? fullName(model, source).substr(model.name().size() + 1) : signal.m_blockPath;
}

std::u16string placeOf(const SignalClient& client) {
    return client.m_modelPath.empty() ? std::u16string() : client.m_modelPath.front();
}

std::vector<std::string> nameStates(const Session& session) {
    std::vector<std::string> states(session.signals().getCount());
    for (const UnsettledMark& mark : session.names().unsettled()) states[mark.position] = "unsettled";
    for (const std::size_t position : session.names().unconfirmed()) states[position] = "unconfirmed";
    return states;
}

// The object of what has moved, with the place that it came from.
std::string withOrigin(std::string object, const std::u16string& from) {
    object.pop_back();
    object += ", \"from\": ";
    appendJsonText(object, from);
    return object + '}';
}

template <class List>
void compare(const List& before, const List& after, const std::u16string& model, RecordWatch::Changes& changes) {
    std::unordered_map<std::string_view, std::size_t> positions;
    for (std::size_t i = 0; i < before.size(); ++i) positions.emplace(before[i].record->m_uuid, i);
    for (const auto& now : after) {
        const auto found = positions.find(now.record->m_uuid);
        if (found == positions.end()) {
            changes.added.push_back(now.text);
            continue;
        }
        const auto& then = before[found->second];
        positions.erase(found);
        if (then.place != now.place)
            changes.changed.push_back(withOrigin(now.text, model + u"/" + then.place));
        else if (!isSavedAlike(*then.record, *now.record) || then.state != now.state)
            changes.changed.push_back(now.text);
    }
    for (const auto& then : before)
        if (positions.contains(then.record->m_uuid)) changes.removed.push_back(then.text);
}

}  // namespace

RecordWatch::RecordWatch(const Session& session) : m_session(session), m_signals(signals()), m_clients(clients()) {}

RecordWatch::Signals RecordWatch::signals() const {
    const std::vector<std::string> states = nameStates(m_session);
    Signals seen;
    for (const SignalSpecification& signal : recordsOf(m_session.signals())) {
        std::string text;
        JsonObject object(text);
        object.text("kind", std::string_view("signal"));
        appendSignal(object, m_session, seen.size());
        object.close();
        seen.push_back({signal.clone(), placeOf(m_session.model(), signal), states[seen.size()], std::move(text)});
    }
    return seen;
}

RecordWatch::Clients RecordWatch::clients() const {
    const SignalUuids uuids(m_session);
    const std::u16string& model = m_session.model().name();
    Clients seen;
    for (const SignalClient& client : recordsOf(m_session.clients())) {
        std::string text;
        JsonObject object(text);
        object.text("kind", std::string_view("client"));
        appendClient(object, client, seen.size(), m_session, uuids);
        object.close();
        seen.push_back({client.clone(), placeOf(client), nameOf(stateOf(client, uuids, model)), std::move(text)});
    }
    return seen;
}

RecordWatch::Changes RecordWatch::changes() const {
    Changes changes;
    compare(m_signals, signals(), m_session.model().name(), changes);
    compare(m_clients, clients(), m_session.model().name(), changes);
    return changes;
}

}  // namespace kshmi
