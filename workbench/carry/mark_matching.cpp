#include "workbench/carry/mark_matching.h"

#include "workbench/text/text.h"

namespace workbench {

struct MarkMatching::Pairings {
    explicit Pairings(const kestrel::Block* old, const kestrel::Block& next)
        : ports(old ? *old : kEmpty, next), m_old(old), m_next(next) {}
    static inline const kestrel::Block kEmpty{};
    const ItemPairing& items() {
        if (!m_items) m_items.emplace(m_old, m_next);
        return *m_items;
    }
    PortPairing ports;

private:
    const kestrel::Block* m_old;
    const kestrel::Block& m_next;
    std::optional<ItemPairing> m_items;
};

MarkMatching::MarkMatching(const kestrel::Model& old, const kestrel::Model& next, const CarryOptions& options,
                           const CarryMap& map)
    : m_next(next), m_options(options), m_map(map), m_blocks(old, next, options.by, map) {}

MarkMatching::~MarkMatching() = default;

Decision MarkMatching::decide(const MarkedSource& source) {
    Decision decision;
    decision.mark.hadSlid = source.hadSlid;
    if (const CarryMap::Target* const target = m_map.source(source.place.block, source.place.name))
        return mapped(source, *target, decision);
    const BlockMatch block = source.block ? m_blocks.of(*source.block) : blockOfOrphan(source);
    decision.isBlockFound = block.how != MatchHow::none && block.how != MatchHow::guess;
    decision.mark.isBlockUnsure = block.how == MatchHow::guess;
    decision.mark.candidates = block.candidates;
    const SourceMatch match = block.block ? sourceIn(source, *block.block) : SourceMatch{};
    decision.target = {block.block, match.port, match.name, match.ssid};
    if (block.block)
        settle(source, block, match, decision);
    else
        decision.mark.fate = block.how == MatchHow::guess ? Fate::ambiguous : Fate::lostBlock;
    if (isParkedFate(decision.mark.fate) && !decision.mark.after) lookForHeirs(source, decision);
    // What is at its old place may be what it was not.
    const bool isCertain = !isParkedFate(decision.mark.fate) && decision.mark.fate != Fate::mapped;
    if (source.isUnsure && isCertain) decision.mark.fate = m_options.acceptsGuesses ? Fate::accepted : Fate::ambiguous;
    return decision;
}

// The port is not where its block went, or the block went nowhere: one elsewhere with its name may be it.
void MarkMatching::lookForHeirs(const MarkedSource& source, Decision& decision) {
    if (!source.isNameKnown || !source.place.domain.empty()) return;
    const std::vector<const kestrel::Block*> heirs = m_blocks.heirs(source.block, source.place.name);
    if (heirs.empty()) return;
    CarriedMark& mark = decision.mark;
    mark.fate = Fate::ambiguous;
    mark.isBlockUnsure = false;
    mark.candidates = heirs.size();
    const SourceMatch match = portNamed(source.place.name, *heirs.front());
    if (heirs.size() > 1 || match.how != SourceHow::same) return;
    decision.target = {heirs.front(), match.port, match.name, 0};
    mark.after = placeOf(source, decision.target);
    if (m_options.acceptsGuesses) mark.fate = Fate::accepted;
}

MarkMatching::Pairings& MarkMatching::pairingsOf(const kestrel::Block* old, const kestrel::Block& next) {
    if (m_lastNext == &next && m_lastOld == old) return *m_last;
    std::unique_ptr<Pairings>& pairings = m_pairings[{old, &next}];
    if (!pairings) pairings = std::make_unique<Pairings>(old, next);
    m_lastOld = old;
    m_lastNext = &next;
    m_last = pairings.get();
    return *m_last;
}

SourceMatch MarkMatching::sourceIn(const MarkedSource& source, const kestrel::Block& block) {
    if (!source.isNameKnown) return {};
    Pairings& pairings = pairingsOf(source.block, block);
    const MarkPlace& place = source.place;
    if (place.domain.empty()) return pairings.ports.of(place.name, source.hadSlid ? 0 : place.port);
    return pairings.items().of(place.domain, place.name,
                               source.hadSlid || !source.block ? std::nullopt : std::optional(place.ssid));
}

SourceMatch MarkMatching::portNamed(std::u16string_view name, const kestrel::Block& block) {
    return pairingsOf(nullptr, block).ports.of(name, 0);
}

// The block is not in the old version: the next one may have it at the old path or with the old identifier.
BlockMatch MarkMatching::blockOfOrphan(const MarkedSource& source) {
    if (const CarryMap::Target* const target = m_map.block(source.place.block))
        return {target->block ? MatchHow::map : MatchHow::none, target->block, 1};
    const kestrel::Block* const byPath = m_next.findByPath(source.place.block);
    const kestrel::Block* const byEid = source.savedEid.empty() ? nullptr : m_next.findByEid(toUtf8(source.savedEid));
    const auto hasIt = [&](const kestrel::Block* block) {
        return block && sourceIn(source, *block).how == SourceHow::same;
    };
    const bool fitsPath = hasIt(byPath) && m_options.by != MatchBy::identifier;
    const bool fitsEid = hasIt(byEid) && m_options.by != MatchBy::path;
    if (fitsPath && fitsEid && byPath != byEid) return {MatchHow::guess, byEid, 2};
    if (!fitsPath && !fitsEid) return {};
    return {MatchHow::identity, fitsPath ? byPath : byEid, 1};
}

Decision MarkMatching::mapped(const MarkedSource& source, const CarryMap::Target& target, Decision decision) {
    decision.mark.fate = target.block ? Fate::mapped : Fate::lostSource;
    if (!target.block) return decision;
    decision.target = {target.block, 0, target.name, 0};
    const bool isPort = source.place.domain.empty();
    if (isPort)
        decision.target.port = portNamed(target.name, *target.block).port;
    else
        decision.target.ssid = pairingsOf(nullptr, *target.block).items().of(source.place.domain, target.name, {}).ssid;
    const bool fits = isPort ? decision.target.port > 0 : decision.target.ssid > 0;
    if (!fits) decision.mark.fate = Fate::ambiguous;
    if (fits) decision.mark.after = placeOf(source, decision.target);
    return decision;
}

MarkPlace MarkMatching::placeOf(const MarkedSource& source, const NewSource& target) {
    return {target.block->path, target.name, target.port, target.ssid, source.place.domain, source.place.activity};
}

void MarkMatching::settle(const MarkedSource& source, const BlockMatch& block, const SourceMatch& match,
                          Decision& decision) const {
    CarriedMark& mark = decision.mark;
    const bool isGuess = block.how == MatchHow::guess || match.how == SourceHow::guess;
    if (match.how == SourceHow::lost && !isGuess) {
        mark.fate = Fate::lostSource;
        return;
    }
    const bool hasTarget = match.how != SourceHow::lost && (match.port > 0 || !source.place.domain.empty());
    if (hasTarget) mark.after = placeOf(source, decision.target);
    mark.candidates = block.how == MatchHow::guess ? block.candidates : match.candidates;
    if (isGuess && !(m_options.acceptsGuesses && hasTarget)) {
        mark.fate = m_options.acceptsGuesses && match.how == SourceHow::lost ? Fate::lostSource : Fate::ambiguous;
        return;
    }
    mark.fate = isGuess ? Fate::accepted : fateOf(source, block, match, *mark.after);
}

Fate MarkMatching::fateOf(const MarkedSource& source, const BlockMatch& block, const SourceMatch& match,
                          const MarkPlace& after) {
    if (block.how == MatchHow::map) return Fate::mapped;
    if (after.block != source.place.block || match.how == SourceHow::rule) return Fate::renamed;
    const bool isSame =
        after.port == source.place.port && (source.place.domain.empty() || after.ssid == source.place.ssid);
    return isSame ? Fate::same : Fate::renumbered;
}

}  // namespace workbench
