#include "workbench/compare/block_matching.h"

namespace workbench {

namespace {

// Identifiers are trusted, or taken for renewed, when the one kind of evidence outweighs the other so many times.
constexpr std::size_t kWeight = 9;
constexpr std::size_t kLeastRenewed = 3;

}  // namespace

BlockMatching::BlockMatching(const kestrel::Model& old, const kestrel::Model& next, MatchBy by, const CarryMap& map)
    : m_versions(old, next),
      m_by(by),
      m_map(map),
      m_matches(m_versions.old.size()),
      m_toNew(m_versions.old.size(), kNone),
      m_toOld(m_versions.next.size(), kNone),
      m_isGone(m_versions.old.size()) {
    for (const std::uint32_t set : m_versions.next.sets) ++m_untakenSets[set];
    matchMapped();
    judgeIdentifiers();
    matchIdentities();
    matchRenamed();
    settleRest();
    guess();
}

const BlockMatch& BlockMatching::of(const kestrel::Block& oldBlock) const {
    return m_matches[*m_versions.old.at(&oldBlock)];
}

void BlockMatching::match(Position block, Position candidate, MatchHow how) {
    m_matches[block] = {how, m_versions.next.blocks[candidate], 1};
    m_toNew[block] = candidate;
    if (m_toOld[candidate] == kNone) --m_untakenSets[m_versions.next.sets[candidate]];
    m_toOld[candidate] = block;
    ++m_matchedCount;
    notePrefixes(block);
}

BlockMatching::Position BlockMatching::byEid(Position block) const {
    if (m_by == MatchBy::path) return kNone;
    return m_versions.next.at(m_versions.next.model.findByEid(m_versions.old.blocks[block]->eid)).value_or(kNone);
}

BlockMatching::Position BlockMatching::byPath(Position block) const {
    if (m_by == MatchBy::identifier) return kNone;
    return m_versions.next.at(m_versions.next.model.findByPath(m_versions.old.path(block))).value_or(kNone);
}

void BlockMatching::matchMapped() {
    for (Position i = 0; i < m_matches.size(); ++i) {
        const CarryMap::Target* const target = m_map.block(m_versions.old.path(i));
        if (!target) continue;
        if (target->block)
            match(i, *m_versions.next.at(target->block), MatchHow::map);
        else
            m_isGone[i] = true;
    }
}

void BlockMatching::judgeIdentifiers() {
    std::size_t agreeing = 0;
    std::size_t contradicting = 0;
    for (Position i = 0; i < m_matches.size(); ++i) {
        const Position candidate = byEid(i);
        const Position atPath = byPath(i);
        if (candidate == kNone || atPath == kNone) continue;
        ++(candidate == atPath ? agreeing : contradicting);
    }
    m_isTrusted = agreeing > kWeight * contradicting;
    m_isRenewed = contradicting >= kLeastRenewed && contradicting > kWeight * agreeing;
}

void BlockMatching::matchIdentities() {
    const auto forFree = [this](auto look) {
        for (Position i = 0; i < m_matches.size(); ++i)
            if (isFree(i)) look(i, byEid(i), byPath(i));
    };
    forFree([this](Position i, Position eid, Position path) {
        if (eid == path && isUntaken(eid)) match(i, eid, MatchHow::identity);
    });
    forFree([this](Position i, Position eid, Position path) {
        if (eid != path && isUntaken(eid) && isUntaken(path)) matchContradicting(i, eid, path);
    });
    forFree([this](Position i, Position eid, Position path) {
        if (!isUntaken(eid) || isUntaken(path) || m_isRenewed) return;
        const bool isSamePath = m_versions.old.path(i) == m_versions.next.path(eid);
        if (isSamePath || m_versions.old.sets[i] == m_versions.next.sets[eid]) match(i, eid, MatchHow::identity);
    });
    forFree([this](Position i, Position eid, Position path) {
        const bool isAlone = m_by == MatchBy::path || m_isRenewed || !isUntaken(eid);
        if (isAlone && isUntaken(path) && m_versions.shared(i, path) > 0) match(i, path, MatchHow::identity);
    });
    forFree([this](Position i, Position eid, Position) {
        if (!isUntaken(eid) || m_isRenewed || m_versions.shared(i, eid) == 0) return;
        if (m_by == MatchBy::identifier || !hasExactlyAlike(i)) match(i, eid, MatchHow::identity);
    });
}

// The identifier and the path name two blocks that are both free.
void BlockMatching::matchContradicting(Position block, Position byEid, Position byPath) {
    if (m_isRenewed) return match(block, byPath, MatchHow::identity);
    const auto isAlike = [&](Position candidate) {
        return m_versions.old.sets[block] == m_versions.next.sets[candidate];
    };
    if (isAlike(byEid) && (m_isTrusted || !isAlike(byPath))) return match(block, byEid, MatchHow::identity);
    if (isAlike(byPath) && !isAlike(byEid)) return match(block, byPath, MatchHow::identity);
    const BlockMatch contested{MatchHow::guess, m_versions.next.blocks[byEid], 2};
    m_matches[block] = contested;
}

bool BlockMatching::hasExactlyAlike(Position block) const {
    const auto found = m_untakenSets.find(m_versions.old.sets[block]);
    return found != m_untakenSets.end() && found->second > 0;
}

// A block at its path that has none of its ports any more is the same one unless another was found.
void BlockMatching::settleRest() {
    for (Position i = 0; i < m_matches.size(); ++i)
        if (const Position path = byPath(i); isFree(i) && isUntaken(path)) match(i, path, MatchHow::identity);
}

}  // namespace workbench
