#include "workbench/compare/carry.h"

#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <unordered_map>

#include "host/values.h"
#include "workbench/compare/mark_matching.h"
#include "workbench/text/error.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

// Puts the new file together.
class Carrier {
public:
    Carrier(const ModelFile& old, ModelFile next, const CarryOptions& options, const CarryMap& map)
        : m_old(old), m_result{std::move(next), {}}, m_matching(old.model, m_result.file.model, options, map) {}

    CarriedModel run() {
        m_result.report.areIdentifiersRenewed = m_matching.blocks().areIdentifiersRenewed();
        decideAll();
        buildSignals();
        buildClients();
        return std::move(m_result);
    }

private:
    void decideAll();
    void decideParked();
    void buildSignals();
    void buildClients();
    void park(const hvArray* signals, std::size_t position, const Decision& decision, bool isNameKnown);

    const ModelFile& m_old;
    CarriedModel m_result;
    MarkMatching m_matching;
    MarkedSources m_reader{m_old.model};
    std::vector<RecordPlace> m_signals, m_clients;  // of the new file
    std::vector<const Decision*> m_decisions;       // of its signals
    std::vector<std::unique_ptr<Decision>> m_all;
    std::vector<MarkedSource> m_sources;                                  // of its signals
    std::unordered_map<std::u16string, const kestrel::Block*> m_blockOf;  // by the UUIDs of its signals
    std::unordered_map<std::u16string, std::size_t> m_parkedAt;           // by the UUIDs of new parked marks
};

void Carrier::decideAll() {
    const hvArray* const signals = m_old.signals.get();
    for (const std::size_t i : ks_host::indicesOf(signals)) {
        const MarkedSource source = m_reader.of(signals, i, m_old.extras.markedName(i));
        m_all.push_back(std::make_unique<Decision>(m_matching.decide(source)));
        Decision& decision = *m_all.back();
        decision.mark.uuid = recordText(signals, i, "UUID");
        decision.mark.position = i;
        m_result.report.marks.push_back(decision.mark);
        if (isParkedFate(decision.mark.fate)) {
            park(signals, i, decision, source.isNameKnown);
            continue;
        }
        m_signals.push_back({signals, i});
        m_decisions.push_back(&decision);
        m_sources.push_back(source);
        m_blockOf[decision.mark.uuid] = decision.target.block;
    }
    for (const std::size_t i : ks_host::indicesOf(m_old.clients.get())) m_clients.push_back({m_old.clients.get(), i});
    decideParked();
}

void Carrier::park(const hvArray* signals, std::size_t position, const Decision& decision, bool isNameKnown) {
    ParkedMark mark;
    mark.signal = copyRecords(RecordKind::signal, {{signals, position}});
    // A name that nobody knew stays unknown: the mark cannot come back by it.
    if (isNameKnown) mark.markedName = decision.mark.before.name;
    setRecordText(mark.signal.get(), 0, "BlockPath_", decision.mark.before.block);
    mark.clients = copyRecords(RecordKind::client, {});
    const bool isItem = !decision.mark.before.domain.empty();
    mark.lost = !decision.isBlockFound ? LostWith::block : isItem ? LostWith::item : LostWith::port;
    mark.isUnsure = decision.mark.fate == Fate::ambiguous;
    mark.from = m_old.model.name();
    m_parkedAt.emplace(decision.mark.uuid, m_result.file.extras.parked.size());
    m_result.file.extras.parked.push_back(std::move(mark));
}

void Carrier::decideParked() {
    for (const ParkedMark& parked : m_old.extras.parked) {
        const std::u16string* const name = parked.markedName ? &*parked.markedName : nullptr;
        MarkedSource source = m_reader.of(parked.signal.get(), 0, name);
        source.isUnsure = parked.isUnsure;
        m_all.push_back(std::make_unique<Decision>(m_matching.decide(source)));
        Decision& decision = *m_all.back();
        decision.mark.uuid = recordText(parked.signal.get(), 0, "UUID");
        decision.mark.position = m_result.report.parked.size();
        decision.mark.hadSlid = false;
        const bool isTaken = m_blockOf.contains(decision.mark.uuid);
        const bool stays = isParkedFate(decision.mark.fate);
        if (isTaken && !stays) {
            ++m_result.report.keptParked;
            decision.mark.fate = Fate::ambiguous;
        }
        m_result.report.parked.push_back(decision.mark);
        if (stays || isTaken) {
            m_result.file.extras.parked.push_back(copyOf(parked));
            continue;
        }
        m_signals.push_back({parked.signal.get(), 0});
        m_decisions.push_back(&decision);
        m_sources.push_back(source);
        m_blockOf[decision.mark.uuid] = decision.target.block;
        for (const std::size_t i : ks_host::indicesOf(parked.clients.get()))
            m_clients.push_back({parked.clients.get(), i});
    }
}

void Carrier::buildSignals() {
    ModelFile& file = m_result.file;
    file.signals = copyRecords(RecordKind::signal, m_signals);
    for (std::size_t i = 0; i < m_decisions.size(); ++i) {
        putOn(file.signals.get(), i, m_sources[i], m_decisions[i]->target);
        file.extras.markedNames.emplace_back(m_decisions[i]->target.name);
    }
}

// Clients of parked marks are parked with them, unless another signal of that UUID stays.
void Carrier::buildClients() {
    const ClientFollower follower(m_old.model, m_result.file.model, m_matching.blocks());
    std::unordered_map<std::size_t, std::vector<RecordPlace>> parked;
    std::vector<RecordPlace> kept;
    for (const RecordPlace& client : m_clients) {
        const std::u16string uuid = recordText(client.records, client.position, "SignalUUID_");
        const auto at = m_parkedAt.find(uuid);
        at != m_parkedAt.end() && !m_blockOf.contains(uuid) ? parked[at->second].push_back(client)
                                                            : kept.push_back(client);
    }
    ModelFile& file = m_result.file;
    file.clients = copyRecords(RecordKind::client, kept);
    for (std::size_t i = 0; i < kept.size(); ++i) {
        const auto block = m_blockOf.find(recordText(file.clients.get(), i, "SignalUUID_"));
        follower.follow(file.clients.get(), i, block == m_blockOf.end() ? nullptr : block->second);
    }
    for (auto& [position, clients] : parked) {
        m_result.report.parkedClients += clients.size();
        file.extras.parked[position].clients = copyRecords(RecordKind::client, clients);
    }
    m_result.report.clients = kept.size();
}

}  // namespace

std::size_t CarryReport::count(Fate fate) const noexcept {
    return static_cast<std::size_t>(std::ranges::count(marks, fate, &CarriedMark::fate));
}

std::size_t CarryReport::slidCount() const noexcept {
    return static_cast<std::size_t>(std::ranges::count(marks, true, &CarriedMark::hadSlid));
}

std::size_t CarryReport::returnedCount() const noexcept {
    return static_cast<std::size_t>(
        std::ranges::count_if(parked, [](const CarriedMark& mark) { return !isParkedFate(mark.fate); }));
}

bool CarryReport::isAllCarried() const noexcept {
    return std::ranges::none_of(marks, [](const CarriedMark& mark) { return isParkedFate(mark.fate); });
}

CarriedModel carryMarks(const ModelFile& old, ModelFile next, const CarryOptions& options, const CarryMap& map) {
    const std::size_t signals = hvGetNumberOfElements(next.signals.get());
    const std::size_t clients = hvGetNumberOfElements(next.clients.get());
    const std::size_t parked = next.extras.parked.size();
    if (signals + clients + parked > 0)
        throw Error(fmt::format("the new version has {}, {} and {} of its own already; carry the marks to a file "
                                "without any",
                                counted(signals, "signal"), counted(clients, "client"), counted(parked, "parked mark")),
                    ErrorCode::model);
    return Carrier(old, std::move(next), options, map).run();
}

}  // namespace workbench
