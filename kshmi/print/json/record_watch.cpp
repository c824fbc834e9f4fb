#include "kshmi/print/json/record_watch.h"

#include <cstddef>
#include <optional>
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

RecordWatch::RecordWatch(const Session& session, const kestrel::Block* block)
    : m_session(session), m_block(block), m_signals(signals()) {
    if (block != nullptr)
        for (const auto& seen : m_signals) m_uuids.insert(seen.record->m_uuid);
    m_clients = clients();
}

bool RecordWatch::isWatched(const SignalClient& client) const {
    return m_block == nullptr || m_uuids.contains(client.m_signalUUID);
}

RecordWatch::Signals RecordWatch::signals() const {
    const std::vector<std::string> states = nameStates(m_session);
    Signals seen;
    for (const auto& [position, signal] : numbered(m_session.signals())) {
        if (m_block != nullptr && blockOf(m_session.model(), signal) != m_block) continue;
        std::string text;
        JsonObject object(text);
        object.text("kind", std::string_view("signal"));
        appendSignal(object, m_session, position);
        object.close();
        seen.push_back({signal.clone(), placeOf(m_session.model(), signal), states[position], std::move(text)});
    }
    return seen;
}

RecordWatch::Clients RecordWatch::clients() const {
    std::optional<SignalUuids> uuids;
    const std::u16string& model = m_session.model().name();
    Clients seen;
    for (const auto& [position, client] : numbered(m_session.clients())) {
        if (!isWatched(client)) continue;
        if (!uuids) uuids.emplace(m_session);
        std::string text;
        JsonObject object(text);
        object.text("kind", std::string_view("client"));
        appendClient(object, client, position, m_session, *uuids);
        object.close();
        seen.push_back({client.clone(), placeOf(client), nameOf(stateOf(client, *uuids, model)), std::move(text)});
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
