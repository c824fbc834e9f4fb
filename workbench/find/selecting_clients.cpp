#include "workbench/find/selecting_clients.h"

#include <algorithm>
#include <unordered_map>

#include "signals/signal_specification.h"
#include "workbench/find/signal_index.h"
#include "workbench/session/records.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

using ks_hmi::SignalClient;

template <class List, class Value>
bool contains(const List& list, const Value& value) {
    return std::find(list.begin(), list.end(), value) != list.end();
}

// Finds the clients of a signal.
class ClientsOfSignals {
public:
    explicit ClientsOfSignals(const Session& session) : m_session(session), m_index(session) {
        for (const auto& [position, client] : numbered(session.clients()))
            m_clients[client.m_signalUUID].push_back(position);
    }

    // Whether there are any.
    bool add(const std::vector<SignalSource>& sources, const ReferenceOptions& options, Positions& positions) const {
        const std::size_t before = positions.size();
        for (const SignalSource& source : sources)
            for (const std::size_t signal : m_index.on(source, options)) {
                const auto found = m_clients.find(m_session.signals().get(signal)->m_uuid);
                if (found == m_clients.end()) continue;
                positions.insert(positions.end(), found->second.begin(), found->second.end());
            }
        return positions.size() > before;
    }

private:
    const Session& m_session;
    SignalIndex m_index;
    std::unordered_map<std::string, Positions> m_clients;
};

Error noClient(const ListedReference& reference) {
    const Error error(inQuotes(reference.text) + ": has no client", ErrorCode::noMatch, Remedy::listClients);
    return reference.place.file.empty() ? error : error.at(reference.place);
}

void addOfSignals(const Selected& selected, const ReferenceOptions& options, const ClientsOfSignals& clients,
                  Positions& positions) {
    for (const NamedSources& named : selected.named)
        if (!clients.add(named.sources, options, positions) && !named.sources.empty()) throw noClient(named.reference);
    clients.add(selected.matching, options, positions);
}

void addInStates(const Session& session, const ClientSelection& selection, Positions& positions) {
    const SignalUuids uuids(session);
    for (const auto& [position, client] : numbered(session.clients())) {
        const bool isInState = contains(selection.states, stateOf(client, uuids, session.model().name()));
        if (isInState || (selection.isDeprecated && client.isDeprecatedObserver())) positions.push_back(position);
    }
}

void requireTypes(const Session& session, const std::vector<std::string>& types) {
    for (const std::string& type : types) {
        const auto isOfType = [&](const SignalClient& client) { return client.m_observerType == type; };
        if (positionsWhere(session.clients(), isOfType).empty())
            throw Error("no client has the type " + inQuotes(std::string_view(type)), ErrorCode::noMatch,
                        Remedy::listClients);
    }
}

}  // namespace

bool ClientSelection::addState(std::string_view word) {
    if (word == kClientStates.back()) return isDeprecated = true;
    const auto found = std::ranges::find(kClientStates, word);
    if (found == kClientStates.end()) return false;
    states.push_back(static_cast<ClientState>(found - kClientStates.begin()));
    return true;
}

Positions selectClients(const Session& session, const Selected* selected, const ReferenceOptions& options,
                        const ClientSelection& selection) {
    requireTypes(session, selection.types);
    const ClientsOfSignals clients(session);
    Positions positions;
    if (selected) addOfSignals(*selected, options, clients, positions);
    for (const std::string& call : selection.calls) positions.push_back(clientCalled(session, call));
    addInStates(session, selection, positions);
    const bool isTypeOnly = !selected && !selection.isAnything();
    if (isTypeOnly) positions = positionsWhere(session.clients(), [](const SignalClient&) { return true; });
    sortUnique(positions);
    if (!selection.types.empty())
        std::erase_if(positions, [&](std::size_t position) {
            return !contains(selection.types, session.clients().get(position)->m_observerType);
        });
    return positions;
}

}  // namespace workbench
