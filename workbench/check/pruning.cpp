#include "workbench/check/pruning.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "signals/signal_specification.h"
#include "workbench/change/marking.h"
#include "workbench/change/observing.h"
#include "workbench/check/field_names.h"
#include "workbench/check/mark_checks.h"
#include "workbench/find/client_names.h"
#include "workbench/find/signal_index.h"
#include "workbench/session/records.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

using ks_hmi::SignalClient;
using ks_hmi::SignalSpecification;

class Pruning {
public:
    Pruning(Session& session, const FindingKinds& kinds) : m_session(session), m_kinds(kinds) {}

    void take(const Finding& finding) {
        const FindingKind kind = ruleOf(finding.code).kind;
        if (!has(m_kinds, kind) || !finding.record) return;
        const bool isSignal = finding.record == RecordKind::signal;
        if (kind == FindingKind::parameters) {
            const std::vector<std::string> names = isSignal
                                                       ? pruneParameters(*m_session.signals().get(finding.position))
                                                       : pruneParameters(*m_session.clients().get(finding.position));
            for (const std::string& name : names)
                tell(kind, fmt::format("the parameter {} of {}", inQuotes(std::string_view(name)), nameOf(finding)));
        } else if ((isSignal ? m_signals : m_clients).insert(finding.position).second) {
            tell(kind, nameOf(finding));
        }
    }

    std::vector<Settled> finish() {
        if (has(m_kinds, FindingKind::duplicates)) moveClients();
        if (has(m_kinds, FindingKind::dangling)) takeLosers();
        if (has(m_kinds, FindingKind::parked)) pruneParked();
        removeClients(m_session, Positions(m_clients.begin(), m_clients.end()));
        removeSignals(m_session, Positions(m_signals.begin(), m_signals.end()));
        return std::move(m_settled);
    }

private:
    void tell(FindingKind kind, std::string what) { m_settled.push_back({kind, std::move(what)}); }
    std::string nameOf(const Finding& finding) const {
        if (finding.record == RecordKind::client) return nameOfClient(m_session, finding.position);
        return fmt::format("signal {} ({})", finding.position + 1, printable(std::string_view(finding.subject)));
    }
    // What is removed: of several findings on one record, the first takes it all.
    static std::vector<std::string> pruneParameters(SignalSpecification& signal) {
        std::vector<std::string> wrong;
        std::erase_if(signal.m_domainParams.edit(), [&](const auto& entry) {
            std::string name = toUtf8(entry.first);
            if (isFieldName(name)) return false;
            wrong.push_back(std::move(name));
            return true;
        });
        std::ranges::sort(wrong);
        return wrong;
    }
    static std::vector<std::string> pruneParameters(SignalClient& client) {
        std::vector<std::string> wrong = wrongFieldNames(client.m_observerParams.get());
        if (!wrong.empty()) client.m_observerParams = withoutWrongFields(client.m_observerParams.get());
        return wrong;
    }
    void pruneParked() {
        for (const ParkedMark& mark : m_session.parked()) tell(FindingKind::parked, nameOfParked(mark));
        m_session.dropParked();
    }
    std::unordered_set<std::string_view> keptUuids() const;
    // The clients of duplicates go to the first mark on their place.
    void moveClients();
    // Clients whose signal goes.
    void takeLosers();

    Session& m_session;
    FindingKinds m_kinds;
    std::unordered_set<std::size_t> m_signals;
    std::unordered_set<std::size_t> m_clients;
    std::vector<Settled> m_settled;
};

std::unordered_set<std::string_view> Pruning::keptUuids() const {
    std::unordered_set<std::string_view> uuids;
    for (const auto& [position, signal] : numbered(m_session.signals()))
        if (!m_signals.contains(position)) uuids.insert(signal.m_uuid);
    return uuids;
}

void Pruning::moveClients() {
    const SignalIndex index(m_session);
    const std::unordered_set<std::string_view> kept = keptUuids();
    std::unordered_map<std::string_view, std::string_view> heirs;
    for (const std::size_t position : m_signals) {
        const SignalSpecification& signal = *m_session.signals().get(position);
        const SignalSource source = sourceOf(m_session.model(), signal);
        if (!source.block || kept.contains(signal.m_uuid)) continue;
        for (const std::size_t other : index.on(source)) {
            const SignalSpecification& heir = *m_session.signals().get(other);
            if (m_signals.contains(other) || activityOf(heir) != activityOf(signal)) continue;
            heirs.emplace(signal.m_uuid, heir.m_uuid);
            break;
        }
    }
    for (SignalClient& client : recordsOf(m_session.clients()))
        if (const auto found = heirs.find(client.m_signalUUID); found != heirs.end())
            client.m_signalUUID = std::string(found->second);
}

void Pruning::takeLosers() {
    const std::unordered_set<std::string_view> kept = keptUuids();
    std::unordered_set<std::string_view> gone;
    for (const std::size_t position : m_signals) gone.insert(m_session.signals().get(position)->m_uuid);
    for (const auto& [position, client] : numbered(m_session.clients())) {
        const std::string& uuid = client.m_signalUUID;
        if (!gone.contains(uuid) || kept.contains(uuid) || !m_clients.insert(position).second) continue;
        tell(FindingKind::dangling, nameOfClient(m_session, position));
    }
}

}  // namespace

std::vector<Settled> prune(Session& session, const std::vector<Finding>& findings, const FindingKinds& kinds) {
    Pruning pruning(session, kinds);
    for (const Finding& finding : findings) pruning.take(finding);
    return pruning.finish();
}

}  // namespace workbench
