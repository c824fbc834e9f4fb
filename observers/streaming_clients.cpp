#include "observers/streaming_clients.h"

#include <algorithm>

#include "foundation/errors.h"
#include "foundation/record_sequence.h"

namespace ks_hmi {

namespace errors = plv_hmi_foundation::errors;
using namespace ks_hmi_foundation;

StreamingClients::StreamingClients() = default;
StreamingClients::~StreamingClients() = default;

std::u16string StreamingClients::getModelName() const { return m_modelName; }

void StreamingClients::setModelName(const std::u16string& newName) {
    std::u16string name = newName;
    std::u16string oldName = newName;
    // Values that are replaced may run scripts when they go: a snapshot is renamed.
    const std::vector<ClientPtr> clients = m_clients;
    m_modelName.swap(oldName);
    for (const ClientPtr& client : clients) client->renameModel(oldName, name);
    if (oldName.empty()) m_knownModelName.swap(name);
}

std::size_t StreamingClients::getCount() const { return m_clients.size(); }

void StreamingClients::add(ClientPtr client) {
    errors::requireRecord(client);
    m_clients.push_back(std::move(client));
}

void StreamingClients::set(std::size_t index, ClientPtr client) {
    errors::requireRecord(client);
    errors::requirePosition(index, m_clients.size());
    m_clients[index].swap(client);
}

SignalClient* StreamingClients::get(std::size_t index) const {
    errors::requirePosition(index, m_clients.size());
    return m_clients[index].get();
}

StreamingClients::ClientPtr StreamingClients::share(std::size_t index) const {
    errors::requirePosition(index, m_clients.size());
    return m_clients[index];
}

void StreamingClients::remove(std::size_t index) {
    const ClientPtr removed = share(index);
    m_clients.erase(m_clients.begin() + static_cast<std::ptrdiff_t>(index));
}

bool StreamingClients::isEqual(const StreamingClients* other) const {
    if (other == nullptr) return false;
    // Comparing parameters runs scripts, which may change either set: snapshots are compared.
    const std::vector<ClientPtr> mine = m_clients;
    const std::vector<ClientPtr> theirs = other->m_clients;
    return std::equal(mine.begin(), mine.end(), theirs.begin(), theirs.end(),
                      [](const ClientPtr& a, const ClientPtr& b) { return a->isEqual(b.get()); });
}

HvArrayPtr StreamingClients::getPersistenceData() const {
    static const std::span<const char* const> fields = SignalClient::getStructFields();
    const std::vector<ClientPtr> clients = m_clients;
    return persistRecords(clients, fields, [](const SignalClient& client, hvArray* s, std::size_t i) {
        client.getPersistenceData(s, i);
    });
}

void StreamingClients::setFromPersistenceData(const hvArray* s) {
    appendRecords<SignalClient>(s, [this](ClientPtr client) { add(std::move(client)); });
}

}  // namespace ks_hmi
