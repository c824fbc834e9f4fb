#include "workbench/carry/carry.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>
#include <unordered_map>

#include "host/values.h"
#include "workbench/carry/mark_matching.h"
#include "workbench/text/error.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

// A mark that stays, or is back.
struct Kept {
    RecordPlace record;
    const CarriedMark* mark;
    const kestrel::Block* block;
    bool isAsSaved;  // nothing of its record changes
};

// Puts the new file together.
class Carrier {
public:
    Carrier(const ModelFile& old, ModelFile next, const CarryOptions& options, const CarryMap& map)
        : m_old(old), m_result{std::move(next), {}}, m_matching(old.model, m_result.file.model, options, map) {}

    CarriedModel run() {
        m_result.report.areIdentifiersRenewed = m_matching.blocks().areIdentifiersRenewed();
        decideMarks();
        decideParked();
        buildSignals();
        buildClients();
        return std::move(m_result);
    }

private:
    void decideMarks();
    void decideParked();
    void buildSignals();
    void buildClients();
    CarriedMark& enter(std::vector<CarriedMark>& marks, const RecordPlace& record, const MarkedSource& source,
                       const CarriedMark& mark);
    bool isAsSaved(const MarkedSource& source, const CarriedMark& mark, const kestrel::Block& block);
    void keep(const RecordPlace& record, const CarriedMark& mark, const kestrel::Block* block, bool isAsSaved);
    void park(const RecordPlace& record, const CarriedMark& mark, bool isBlockFound, bool isNameKnown);

    const ModelFile& m_old;
    CarriedModel m_result;
    MarkMatching m_matching;
    MarkedSources m_reader{m_old.model};
    std::vector<Kept> m_kept;                     // the signals of the new file
    std::vector<RecordPlace> m_clients;           // of the new file
    bool m_needsBlocks = false;                   // somebody will ask m_blockOf
    MarkPlace m_before;                           // of the mark that was entered last
    std::u16string_view m_movedTo;                // where the last one is that is on another block
    const kestrel::Block* m_lastBlock = nullptr;  // that was looked at last, and its identifier
    std::u16string m_lastEid;
    // By the UUIDs of its signals, and of new parked marks, as the report has them.
    std::unordered_map<std::u16string_view, const kestrel::Block*> m_blockOf;
    std::unordered_map<std::u16string_view, std::size_t> m_parkedAt;
};

void Carrier::decideMarks() {
    const hvArray* const signals = m_old.signals.get();
    const hvArray* const clients = m_old.clients.get();
    std::vector<CarriedMark>& marks = m_result.report.marks;
    m_needsBlocks = hvGetNumberOfElements(clients) > 0 || !m_old.extras.parked.empty();
    marks.reserve(hvGetNumberOfElements(signals));
    m_kept.reserve(marks.capacity());
    for (const std::size_t i : ks_host::indicesOf(signals)) {
        const MarkedSource source = m_reader.of(signals, i, m_old.extras.markedName(i));
        const Decision decision = m_matching.decide(source);
        const CarriedMark& mark = enter(marks, {signals, i}, source, decision.mark);
        const kestrel::Block* const block = decision.target.block;
        if (isParkedFate(mark.fate))
            park({signals, i}, mark, decision.isBlockFound, source.isNameKnown);
        else
            keep({signals, i}, mark, block, isAsSaved(source, mark, *block));
    }
    for (const std::size_t i : ks_host::indicesOf(clients)) m_clients.push_back({clients, i});
}

// The report keeps the texts.
CarriedMark& Carrier::enter(std::vector<CarriedMark>& marks, const RecordPlace& record, const MarkedSource& source,
                            const CarriedMark& mark) {
    CarriedTexts& texts = m_result.report.texts;
    CarriedMark& entered = marks.emplace_back(mark);
    entered.before = m_before = texts.keep(source.place, m_before);
    if (mark.after) {
        const bool hasMoved = mark.after->block != m_before.block;
        MarkPlace like = m_before;
        if (hasMoved) like.block = m_movedTo;
        entered.after = texts.keep(*mark.after, like);
        if (hasMoved) m_movedTo = entered.after->block;
    }
    entered.uuid = texts.keep(recordView(record.records, record.position, "UUID"));
    entered.position = record.position;
    return entered;
}

// A port whose block, name and number are what they were.
bool Carrier::isAsSaved(const MarkedSource& source, const CarriedMark& mark, const kestrel::Block& block) {
    if (mark.fate != Fate::same || !mark.before.domain.empty() || source.savedPath != block.path) return false;
    if (m_lastBlock != &block) {
        m_lastBlock = &block;
        m_lastEid = toUtf16(block.eid);
    }
    return source.savedEid == m_lastEid;
}

void Carrier::keep(const RecordPlace& record, const CarriedMark& mark, const kestrel::Block* block, bool isAsSaved) {
    m_kept.push_back({record, &mark, block, isAsSaved});
    if (m_needsBlocks) m_blockOf[mark.uuid] = block;
}

void Carrier::park(const RecordPlace& record, const CarriedMark& mark, bool isBlockFound, bool isNameKnown) {
    ParkedMark parked;
    parked.signal = copyRecords(RecordKind::signal, {record});
    // A name that nobody knew stays unknown: the mark cannot come back by it.
    if (isNameKnown) parked.markedName.emplace(mark.before.name);
    setRecordText(parked.signal.get(), 0, "BlockPath_", mark.before.block);
    parked.clients = copyRecords(RecordKind::client, {});
    const bool isItem = !mark.before.domain.empty();
    parked.lost = !isBlockFound ? LostWith::block : isItem ? LostWith::item : LostWith::port;
    parked.isUnsure = mark.fate == Fate::ambiguous;
    parked.from = m_old.model.name();
    m_parkedAt.emplace(mark.uuid, m_result.file.extras.parked.size());
    m_result.file.extras.parked.push_back(std::move(parked));
}

void Carrier::decideParked() {
    std::vector<CarriedMark>& marks = m_result.report.parked;
    marks.reserve(m_old.extras.parked.size());
    for (const ParkedMark& parked : m_old.extras.parked) {
        const RecordPlace record{parked.signal.get(), 0};
        MarkedSource source = m_reader.of(record.records, 0, parked.markedName ? &*parked.markedName : nullptr);
        source.isUnsure = parked.isUnsure;
        const Decision decision = m_matching.decide(source);
        CarriedMark& mark = enter(marks, record, source, decision.mark);
        mark.position = marks.size() - 1;
        mark.hadSlid = false;
        const bool isTaken = m_blockOf.contains(mark.uuid);
        const bool stays = isParkedFate(mark.fate);
        if (isTaken && !stays) {
            ++m_result.report.keptParked;
            mark.fate = Fate::ambiguous;
        }
        if (stays || isTaken) {
            m_result.file.extras.parked.push_back(copyOf(parked));
            continue;
        }
        keep(record, mark, decision.target.block, /*isAsSaved=*/false);
        for (const std::size_t i : ks_host::indicesOf(parked.clients.get()))
            m_clients.push_back({parked.clients.get(), i});
    }
}

void Carrier::buildSignals() {
    ModelFile& file = m_result.file;
    std::vector<RecordPlace> records;
    records.reserve(m_kept.size());
    for (const Kept& one : m_kept) records.push_back(one.record);
    file.signals = copyRecords(RecordKind::signal, records);
    file.extras.markedNames.reserve(m_kept.size());
    for (std::size_t i = 0; i < m_kept.size(); ++i) {
        const CarriedMark& mark = *m_kept[i].mark;
        if (!m_kept[i].isAsSaved) putOn(file.signals.get(), i, mark.before, *m_kept[i].block, *mark.after);
        file.extras.markedNames.emplace_back(mark.after->name);
    }
}

// Clients of parked marks are parked with them, unless another signal of that UUID stays.
void Carrier::buildClients() {
    const ClientFollower follower(m_old.model, m_result.file.model, m_matching.blocks());
    std::unordered_map<std::size_t, std::vector<RecordPlace>> parked;
    std::vector<RecordPlace> kept;
    for (const RecordPlace& client : m_clients) {
        const std::u16string_view uuid = recordView(client.records, client.position, "SignalUUID_");
        const auto at = m_parkedAt.find(uuid);
        at != m_parkedAt.end() && !m_blockOf.contains(uuid) ? parked[at->second].push_back(client)
                                                            : kept.push_back(client);
    }
    ModelFile& file = m_result.file;
    file.clients = copyRecords(RecordKind::client, kept);
    for (std::size_t i = 0; i < kept.size(); ++i) {
        const auto block = m_blockOf.find(recordView(file.clients.get(), i, "SignalUUID_"));
        follower.follow(file.clients.get(), i, block == m_blockOf.end() ? nullptr : block->second);
    }
    for (auto& [position, clients] : parked) {
        m_result.report.parkedClients += clients.size();
        file.extras.parked[position].clients = copyRecords(RecordKind::client, clients);
    }
    m_result.report.clients = kept.size();
}

}  // namespace

std::u16string_view CarriedTexts::keep(std::u16string_view text) {
    if (m_pieces.empty() || m_pieces.back().capacity() - m_pieces.back().size() < text.size())
        m_pieces.emplace_back().reserve(std::max(kPiece, text.size()));
    std::vector<char16_t>& piece = m_pieces.back();
    piece.insert(piece.end(), text.begin(), text.end());
    return {piece.data() + piece.size() - text.size(), text.size()};
}

MarkPlace CarriedTexts::keep(MarkPlace place, const MarkPlace& like) {
    for (const auto text : {&MarkPlace::block, &MarkPlace::name, &MarkPlace::domain, &MarkPlace::activity})
        place.*text = place.*text == like.*text ? like.*text : keep(place.*text);
    return place;
}

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
