#include "workbench/check/mending.h"

#include <fmt/format.h>

#include "signals/signal_specification.h"
#include "workbench/change/following.h"
#include "workbench/check/mark_checks.h"
#include "workbench/find/client_names.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

using ks_hmi::SignalClient;
using ks_hmi::SignalSpecification;

class Mending {
public:
    explicit Mending(Session& session) : m_session(session) {}

    void mend(const Finding& finding, FindingKind kind) {
        const bool isSignal = finding.record == RecordKind::signal;
        const std::string done = isSignal ? mendSignal(*m_session.signals().get(finding.position), kind)
                                          : mendClient(*m_session.clients().get(finding.position), kind);
        if (done.empty()) return;
        const std::string name =
            isSignal ? fmt::format("signal {} ({})", finding.position + 1, printable(std::string_view(finding.subject)))
                     : nameOfClient(m_session, finding.position);
        m_settled.push_back({kind, fmt::format("{}: {}", name, done)});
    }

    void followNames() {
        for (const FollowedMark& one : workbench::followNames(m_session))
            m_settled.push_back({FindingKind::names, fmt::format("signal {}: {}, after its name {}", one.position + 1,
                                                                 wayOf(one), inQuotes(one.name))});
    }

    std::vector<Settled> take() noexcept { return std::move(m_settled); }

private:
    std::string wayOf(const FollowedMark& one) const {
        if (one.from != one.to) return fmt::format("from {} to {}", printable(one.from), printable(one.to));
        const std::u16string ssid = m_session.signals().get(one.position)->getValueForDomainParams(u"SSID");
        return fmt::format("{} has the SSID {} now", printable(one.to), printable(ssid));
    }

    static std::string newUuid() { return SignalSpecification::getUUIDFromBlockHandle(0, 0.0, /*useMap=*/false); }

    std::string mendSignal(SignalSpecification& signal, FindingKind kind) const {
        if (kind == FindingKind::charts) return mendChart(signal);
        std::string& text = kind == FindingKind::uuids ? signal.m_uuid : signal.m_eid;
        if (kind == FindingKind::uuids) return "UUID " + (text = newUuid());
        const kestrel::Block* const block = m_session.model().findByPath(signal.m_blockPath);
        return block ? "element identifier " + inQuotes(std::string_view(text = block->eid)) : std::string();
    }

    std::string mendChart(SignalSpecification& signal) const {
        const std::optional<ChartParameters> params = chartParameters(m_session.model(), signal);
        if (!params) return {};
        signal.m_domainParams[u"SSID"] = toUtf16(std::to_string(params->item.ssid));
        signal.m_domainParams[u"Activity"] = params->activity;
        return fmt::format("SSID {}, activity {}", params->item.ssid, toUtf8(params->activity));
    }

    std::string mendClient(SignalClient& client, FindingKind kind) const {
        if (kind == FindingKind::uuids) return "UUID " + (client.m_uuid = newUuid());
        const kestrel::Block* const block = m_session.model().findByPath(client.m_modelPath.front());
        if (!block) return {};
        client.m_modelPathEID.resize(client.m_modelPath.size());
        return "element identifier " + inQuotes(std::string_view(client.m_modelPathEID.front() = block->eid));
    }

    Session& m_session;
    std::vector<Settled> m_settled;
};

FindingKinds setOf(const std::vector<FindingKind>& kinds) {
    FindingKinds set;
    for (const FindingKind kind : kinds) set.set(static_cast<std::size_t>(kind));
    return set;
}

}  // namespace

FindingKinds findingKindsCalled(const std::vector<std::string>& words, bool (*isAllowed)(FindingKind),
                                std::string_view option) {
    const std::vector<FindingKind> allowed = findingKinds(isAllowed);
    FindingKinds kinds;
    for (const std::string& word : words) {
        const std::optional<FindingKind> kind = findingKindOf(word);
        if (word == "all")
            kinds |= setOf(allowed);
        else if (kind && isAllowed(*kind))
            kinds |= setOf({*kind});
        else
            throw Error(fmt::format("{}: there is no kind {}; it takes {}, or all", option, inQuotes(word),
                                    listed(allowed, allowed.size(), [](FindingKind one) { return textOf(one); })));
    }
    return kinds;
}

FindingKinds prunedKinds(const std::vector<std::string>& words, std::string_view option) {
    return words.empty() ? setOf(findingKinds(isDead)) : findingKindsCalled(words, isPrunable, option);
}

std::vector<Settled> mend(Session& session, const std::vector<Finding>& findings, const FindingKinds& kinds) {
    Mending mending(session);
    for (const Finding& finding : findings) {
        const FindingKind kind = ruleOf(finding.code).kind;
        const bool isOfRecord = finding.cure == Cure::mend && kind != FindingKind::names;
        if (isOfRecord && has(kinds, kind)) mending.mend(finding, kind);
    }
    // With an identifier a signal is found again after its block has moved.
    if (has(kinds, FindingKind::names)) mending.followNames();
    session.signals().updateObservedPortMap();
    return mending.take();
}

}  // namespace workbench
