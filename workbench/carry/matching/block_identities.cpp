#include <algorithm>
#include <set>

#include "workbench/carry/matching/block_matching.h"

namespace workbench {

namespace {

// Identifiers are trusted, or taken for renewed, when the one kind of evidence outweighs the other so many times.
constexpr std::size_t kWeight = 9;
constexpr std::size_t kUnclearWeight = 3;
constexpr std::size_t kLeastRenewed = 3;
// A block is like another from this share of names on, and clearly more like one than another by that factor.
constexpr double kLikely = 0.5;
constexpr double kLead = 2.0;
// A name that more blocks have tells too little to look for a block by.
constexpr std::size_t kMostHolders = 32;

bool isClearlyMore(double one, double other) { return one >= kLikely && one >= kLead * other; }

// Whether identifiers count the blocks, and may do so anew in each version.
bool isNumbered(const VersionBlocks& version) {
    for (std::size_t i = 0; i < version.size(); ++i)
        if (version.blocks[i]->eid != std::to_string(i + 1)) return false;
    return true;
}

}  // namespace

void BlockMatching::findSameKeys() {
    const VersionBlocks& next = m_versions.next;
    for (const kestrel::Block* const block : m_versions.old.blocks) {
        const auto positionOf = [&](const kestrel::Block* found) { return next.at(found).value_or(kNone); };
        m_withEid.push_back(m_by == MatchBy::path ? kNone : positionOf(next.model.findByEid(block->eid)));
        m_withPath.push_back(m_by == MatchBy::identifier ? kNone : positionOf(next.model.findByPath(block->path)));
    }
}

// The new block with the same names, where no other block of either version has them.
BlockMatching::Position BlockMatching::exactlyAlike(Position block) const {
    const std::uint32_t set = m_versions.old.sets[block];
    if (m_versions.old.names[block].empty() || m_versions.isWeak(block)) return kNone;
    return m_versions.isUniqueSet(set) ? m_newWithSet[set] : kNone;
}

// What agrees or contradicts: where the path leads and, where it leads nowhere, which block has the same ports.
void BlockMatching::judgeIdentifiers() {
    if (m_by == MatchBy::path) return;
    Evidence evidence;
    for (Position i = 0; i < m_matches.size(); ++i) weigh(i, evidence);
    const auto& [agreeing, unclear, contradicting, differing] = evidence;
    m_areNumbers = differing > 0 && isNumbered(m_versions.old) && isNumbered(m_versions.next);
    m_isTrusted =
        m_by == MatchBy::identifier || (agreeing > kWeight * contradicting + kUnclearWeight * unclear && !m_areNumbers);
    const std::size_t others = contradicting + unclear;
    m_isRenewed = !m_isTrusted && others >= kLeastRenewed && others > kWeight * agreeing;
}

void BlockMatching::weigh(Position block, Evidence& evidence) const {
    const Position candidate = byEid(block);
    const Position path = byPath(block);
    const Position other = path == kNone ? exactlyAlike(block) : path;
    if (candidate == kNone || other == kNone) return;
    evidence.differing += candidate == other ? 0 : 1;
    const double likeness = m_versions.likeness(block, candidate);
    const double otherLikeness = m_versions.likeness(block, other);
    if (candidate == other || isClearlyMore(likeness, otherLikeness))
        ++evidence.agreeing;
    else
        ++(isClearlyMore(otherLikeness, likeness) ? evidence.contradicting : evidence.unclear);
}

void BlockMatching::matchIdentities() {
    Claims claims(m_matches.size());
    for (Position i = 0; i < claims.size(); ++i)
        if (isOpen(i)) claims[i] = claimOf(i);
    settleContests(claims);
    for (Position i = 0; i < claims.size(); ++i) {
        const Claim& claim = claims[i];
        if (claim.how == Claim::How::take) match(i, claim.candidate, MatchHow::identity);
        if (claim.how == Claim::How::unsure)
            m_matches[i] = {MatchHow::guess, m_versions.next.blocks[claim.candidate], 2};
    }
}

BlockMatching::Claim BlockMatching::claimOf(Position block) const {
    const auto untaken = [this](Position candidate) { return isUntaken(candidate) ? candidate : kNone; };
    const Position eid = m_isRenewed ? kNone : untaken(byEid(block));
    const Position path = untaken(byPath(block));
    if (eid == kNone && path == kNone) return {};
    const bool isContested = eid != kNone && path != kNone && eid != path;
    if (isContested) return contestedClaim(block, eid, path);
    return claimOf(block, eid == kNone ? path : eid, eid != kNone, path != kNone);
}

// Where an identifier follows from the path, the two are one witness.
bool BlockMatching::isFromPath(Position block, Position candidate) const {
    return m_versions.old.blocks[block]->source && m_versions.next.blocks[candidate]->source;
}

BlockMatching::Claim BlockMatching::claimOf(Position block, Position candidate, bool isByEid, bool isByPath) const {
    using How = Claim::How;
    const bool hasNone = m_versions.old.names[block].empty();
    const double likeness = m_versions.likeness(block, candidate);
    if (hasNone) return {How::take, candidate, isByEid};
    const bool isTwice = isByEid && isByPath && !m_areNumbers && !isFromPath(block, candidate);
    const bool isSaid = isByEid && m_isTrusted && !isFromPath(block, candidate);
    if (likeness == 0.0 && !isTwice) return {};
    const bool isInsisted = m_by != MatchBy::both || (isSaid && isByPath);
    if (isInsisted || ((isSaid || isTwice) && likeness > kLikely)) return {How::take, candidate, isByEid};
    const bool isByNumber = m_areNumbers && exactlyAlike(block) != candidate;
    if (isByEid && !isByPath && (m_versions.isWeak(block) || isByNumber)) return {How::unsure, candidate, isByEid};
    if (likeness > kLikely) return {isExchanged(block, candidate) ? How::unsure : How::take, candidate, isByEid};
    const Position rival = rivalOf(block, candidate);
    const bool isOther = !isTwice && !isSaid && likeness < kLikely && isExactlyAnother(block, candidate);
    if (isOther && rival == kNone) return {};
    const bool isLess = rival != kNone && m_versions.likeness(block, rival) <= likeness;
    if (rival == kNone || (isLess && hasKeptAll(block, candidate))) return {How::take, candidate, isByEid};
    if (!isTwice && isClearlyElsewhere(block, candidate, rival)) return {};
    return {How::unsure, candidate, isByEid};
}

// It got ports, even if so many that it is hardly like itself, and is no other block that was.
bool BlockMatching::hasKeptAll(Position block, Position candidate) const {
    return m_versions.shared(block, candidate) == m_versions.old.names[block].size() &&
           !isExactlyAnother(block, candidate);
}

// Another block has exactly its names now, and it has exactly those of another one.
bool BlockMatching::isExchanged(Position block, Position candidate) const {
    const Position other = exactlyAlike(block);
    return other != kNone && other != candidate && isExactlyAnother(block, candidate);
}

// The new block that is most like it, and as much as the candidate, and is no other's.
BlockMatching::Position BlockMatching::rivalOf(Position block, Position candidate) const {
    const double likeness = m_versions.likeness(block, candidate);
    std::set<Position> candidates;
    for (const std::uint32_t name : m_versions.old.names[block])
        if (const auto holders = holdersOf(name); holders.size() <= kMostHolders)
            candidates.insert(holders.begin(), holders.end());
    const auto isRival = [&](Position other) {
        return other != candidate && isUntaken(other) && m_versions.likeness(block, other) >= likeness &&
               !isOwned(other, block);
    };
    BestLikeness best;
    for (const Position other : candidates)
        if (isRival(other)) best.offer(other, m_versions.likeness(block, other));
    return best.first;
}

bool BlockMatching::isOwned(Position candidate, Position block) const {
    const kestrel::Block& it = *m_versions.next.blocks[candidate];
    const auto owns = [&](const kestrel::Block* one) {
        const Position owner = m_versions.old.at(one).value_or(kNone);
        return owner != kNone && owner != block && m_versions.likeness(owner, candidate) > kLikely;
    };
    return owns(m_versions.old.model.findByPath(it.path)) ||
           (!m_isRenewed && !m_areNumbers && owns(m_versions.old.model.findByEid(it.eid)));
}

bool BlockMatching::isExactlyAnother(Position block, Position candidate) const {
    const std::uint32_t set = m_versions.next.sets[candidate];
    return m_versions.isUniqueSet(set) && m_oldWithSet[set] != kNone && m_oldWithSet[set] != block;
}

// What is at the old place is exactly another block that was.
bool BlockMatching::isClearlyElsewhere(Position block, Position candidate, Position rival) const {
    const bool isMore = isClearlyMore(m_versions.likeness(block, rival), m_versions.likeness(block, candidate));
    return isMore && isExactlyAnother(block, candidate) && m_versions.shared(block, rival) >= 2;
}

// The identifier and the path lead to two blocks.
BlockMatching::Claim BlockMatching::contestedClaim(Position block, Position byEid, Position byPath) const {
    using How = Claim::How;
    const double eid = m_versions.likeness(block, byEid);
    const double path = m_versions.likeness(block, byPath);
    if (m_versions.old.names[block].empty()) return {m_isTrusted ? How::take : How::none, byEid, true};
    if (eid == 0.0 && path == 0.0) return {};
    const bool isMorePath = isClearlyMore(path, eid);
    const bool isMoreEid = isClearlyMore(eid, path) && (!m_areNumbers || exactlyAlike(block) == byEid);
    if (m_isTrusted && eid > 0.0 && !isMorePath) return {How::take, byEid, true};
    if (m_isTrusted || !(isMorePath || isMoreEid)) return {How::unsure, byEid, true};
    return isMorePath ? claimOf(block, byPath, false, true) : Claim{How::take, byEid, true};
}

void BlockMatching::settleContests(Claims& claims) const {
    std::unordered_map<Position, std::vector<Position>> claimants;
    for (Position i = 0; i < claims.size(); ++i)
        if (claims[i].how == Claim::How::take) claimants[claims[i].candidate].push_back(i);
    for (const auto& [candidate, blocks] : claimants)
        if (blocks.size() > 1) settleContest(blocks, claims);
}

// One that an identifier stays with, or that is clearly more like it, wins. The others may be found elsewhere.
void BlockMatching::settleContest(const std::vector<Position>& blocks, Claims& claims) const {
    const auto likeness = [&](Position i) { return m_versions.likeness(i, claims[i].candidate); };
    const auto wins = [&](Position one) {
        return std::ranges::all_of(blocks, [&](Position other) {
            const bool isStronger = m_isTrusted && claims[one].isByEid && !claims[other].isByEid;
            return other == one || isStronger || isClearlyMore(likeness(one), likeness(other));
        });
    };
    const auto winner = std::ranges::find_if(blocks, wins);
    for (const Position i : blocks) {
        if (winner == blocks.end()) claims[i].how = Claim::How::unsure;
        if (winner != blocks.end() && i != *winner) claims[i] = {};
    }
}

}  // namespace workbench
