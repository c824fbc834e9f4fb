#include "workbench/find/watching.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <iterator>

#include "workbench/session/records.h"
#include "workbench/text/error.h"
#include "workbench/text/text.h"

#include "signals/signal_specification.h"

namespace workbench {

namespace {

using ks_hmi::SignalClient;

bool isOpen(std::u16string_view modelName) {
    return modelName.empty() || kestrel::loadedModels().find(modelName) != nullptr;
}

// The first element of the model path is in the owning model; the others start with their model's name.
bool namesOpenModelsOnly(const SignalClient& client) {
    if (!client.m_modelPath.empty() && !isOpen(client.m_sourceModel)) return false;
    for (std::size_t i = 1; i < client.m_modelPath.size(); ++i)
        if (!isOpen(client.m_modelPath[i].substr(0, client.m_modelPath[i].find(u'/')))) return false;
    return true;
}

template <class Set>
std::size_t positionCalled(const Set& set, const std::string& call, const char* kind, Remedy remedy) {
    for (const auto& [position, record] : numbered(set))
        if (record.m_uuid == call) return position;
    std::size_t number = 0;
    const char* const end = call.data() + call.size();
    const bool isNumber = std::from_chars(call.data(), end, number).ptr == end && !call.empty();
    if (isNumber && number >= 1 && number <= set.getCount()) return number - 1;
    throw Error(fmt::format("no {} has the UUID or position {}", kind, inQuotes(std::string_view(call))),
                ErrorCode::noMatch, remedy);
}

}  // namespace

SignalUuids::SignalUuids(const Session& session) {
    m_positions.reserve(session.signals().getCount());
    for (const auto& [position, signal] : numbered(session.signals())) m_positions.emplace(signal.m_uuid, position);
}

std::optional<std::size_t> SignalUuids::positionOf(std::string_view uuid) const {
    const auto found = m_positions.find(uuid);
    return found == m_positions.end() ? std::nullopt : std::optional(found->second);
}

std::size_t signalCalled(const Session& session, const std::string& call) {
    return positionCalled(session.signals(), call, "signal", Remedy::listSignals);
}

std::size_t clientCalled(const Session& session, const std::string& call) {
    return positionCalled(session.clients(), call, "client", Remedy::listClients);
}

Watched watched(const SignalClient& client, const SignalUuids& uuids) {
    if (uuids.positionOf(client.m_signalUUID)) return Watched::here;
    return namesOpenModelsOnly(client) ? Watched::gone : Watched::elsewhere;
}

ClientState stateOf(const SignalClient& client, const SignalUuids& uuids, std::u16string_view modelName) {
    if (!client.m_sourceModel.empty() && client.m_sourceModel != modelName) return ClientState::foreign;
    switch (watched(client, uuids)) {
        case Watched::gone:
            return ClientState::dangling;
        case Watched::elsewhere:
            return ClientState::elsewhere;
        case Watched::here:
            break;
    }
    return ClientState::watching;
}

const char* nameOf(ClientState state) noexcept {
    constexpr const char* kNames[] = {"watching", "dangling", "elsewhere", "foreign"};
    return kNames[static_cast<std::size_t>(state)];
}

DanglingWatch::DanglingWatch(const Session& session) : m_session(session), m_before(dangling()) {}

Positions DanglingWatch::dangling() const {
    if (m_session.clients().getCount() == 0) return {};
    const SignalUuids uuids(m_session);
    return positionsWhere(m_session.clients(),
                          [&](const SignalClient& client) { return watched(client, uuids) == Watched::gone; });
}

Positions DanglingWatch::lost() const {
    const Positions now = dangling();
    Positions lost;
    std::set_difference(now.begin(), now.end(), m_before.begin(), m_before.end(), std::back_inserter(lost));
    return lost;
}

}  // namespace workbench
