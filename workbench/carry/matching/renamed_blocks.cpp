#include <algorithm>
#include <set>

#include "workbench/carry/matching/block_matching.h"

namespace workbench {

namespace {

// Each round finds something; so many are more than any model is deep.
constexpr int kMostRounds = 32;
// A name that more blocks have tells too little to be gone by.
constexpr std::size_t kMostSharing = 32;
constexpr double kLikelyRenamed = 0.5;

std::u16string setKey(const VersionBlocks& version, std::size_t block) {
    return {static_cast<char16_t>(version.sets[block] >> 16U), static_cast<char16_t>(version.sets[block])};
}

}  // namespace

void BestLikeness::offer(std::size_t candidate, double value) noexcept {
    ++count;
    if (value <= likeness) {
        next = std::max(next, value);
        return;
    }
    next = likeness;
    likeness = value;
    first = candidate;
}

bool BestLikeness::isClear() const noexcept {
    constexpr double kLeadOfRivals = 2.0;
    return likeness >= kLikelyRenamed && likeness >= kLeadOfRivals * next;
}

void BlockMatching::matchRenamed() {
    for (int round = 0; round < kMostRounds; ++round) {
        const std::size_t before = m_matchedCount;
        matchUniqueSets();
        matchBelowRenamed();
        matchAmongSiblings();
        matchAlikeNames();
        matchBelowRenamed();
        matchLikeness();
        if (m_matchedCount == before) return;
    }
}

bool BlockMatching::isAnythingLeft() const {
    for (Position i = 0; i < m_matches.size(); ++i)
        if (isFree(i) && !m_versions.old.names[i].empty()) return std::ranges::find(m_toOld, kNone) != m_toOld.end();
    return false;
}

// What one old and one new block alone have a key in common, among those that are not yet found or among all.
template <class KeyOf, class Accept>
void BlockMatching::matchUnique(Among among, KeyOf keyOf, Accept accept) {
    struct Pair {
        Position block = kNone, candidate = kNone;
        bool isUnique = true;
    };
    if (!isAnythingLeft()) return;
    std::unordered_map<std::u16string, Pair> pairs;
    const auto enter = [](Position& place, Pair& pair, Position position) {
        if (place != kNone) pair.isUnique = false;
        place = position;
    };
    for (Position i = 0; i < m_matches.size(); ++i) {
        if ((among == Among::open && !isOpen(i)) || m_versions.old.names[i].empty()) continue;
        Pair& pair = pairs[keyOf(m_versions.old, i)];
        enter(pair.block, pair, i);
    }
    for (Position i = 0; i < m_versions.next.size(); ++i) {
        if (among == Among::open && !isUntaken(i)) continue;
        const auto found = pairs.find(keyOf(m_versions.next, i));
        if (found != pairs.end()) enter(found->second.candidate, found->second, i);
    }
    for (const auto& [key, pair] : pairs)
        if (pair.isUnique && isFree(pair.block) && isUntaken(pair.candidate) && accept(pair.block, pair.candidate))
            match(pair.block, pair.candidate, MatchHow::rule);
}

void BlockMatching::matchUniqueSets() {
    matchUnique(Among::open, setKey, [this](Position block, Position candidate) {
        return !m_versions.isWeak(block) || isInContext(block, candidate) || isAloneInNew(block, candidate);
    });
}

// All others with its names were found; its parent is gone, and that of the candidate is new.
bool BlockMatching::isAloneInNew(Position block, Position candidate) const {
    const std::u16string_view parent = parentView(m_versions.old.path(block));
    const std::u16string_view newParent = parentView(m_versions.next.path(candidate));
    return m_versions.old.names[block].size() > 1 && !parent.empty() && !newParent.empty() &&
           !m_versions.next.parents.contains(parent) && !m_versions.old.parents.contains(newParent) &&
           m_parents.isUnknown(parent, newParent);
}

// A block with names that others have, too: it must be below the same parent, and behind and before the same blocks.
bool BlockMatching::isInContext(Position block, Position candidate) const {
    const std::u16string& before = m_versions.old.path(block);
    const std::u16string& after = m_versions.next.path(candidate);
    if (areNumberedApart(lastSegment(before), lastSegment(after))) return false;
    const std::u16string_view parent = parentView(before);
    const std::u16string_view newParent = parentView(after);
    if (!m_parents.correspond(parent, newParent)) return false;
    return parent != newParent || isBetweenSame(block, candidate);
}

bool BlockMatching::isBetweenSame(Position block, Position candidate) const {
    const bool isFirst = block == 0 || candidate == 0;
    const bool isLast = block + 1 == m_toNew.size() || candidate + 1 == m_toOld.size();
    const bool fitsBefore = isFirst ? block == candidate : m_toNew[block - 1] == candidate - 1;
    const bool fitsAfter =
        isLast ? block + 1 == m_toNew.size() && candidate + 1 == m_toOld.size() : m_toNew[block + 1] == candidate + 1;
    return fitsBefore && fitsAfter && !(isFirst && isLast);
}

// Below a renamed parent: the only one that is left with those names.
void BlockMatching::matchAmongSiblings() {
    const auto keyOf = [this](const VersionBlocks& version, Position i) {
        const std::u16string_view parent = parentView(version.path(i));
        const std::u16string_view now = &version == &m_versions.old ? m_parents.of(parent) : parent;
        return setKey(version, i).append(now.empty() ? parent : now);
    };
    matchUnique(Among::open, keyOf,
                [this](Position block, Position candidate) { return isInContext(block, candidate); });
}

// "Plant/Tank" is "Process/Tank" now: then "Plant" may be "Process" for others, too.
void BlockMatching::matchBelowRenamed() {
    for (Position i = 0; i < m_matches.size(); ++i)
        if (isFree(i) && !m_versions.old.names[i].empty()) matchBelow(i);
}

void BlockMatching::matchBelow(Position block) {
    const std::u16string_view path = m_versions.old.path(block);
    for (std::size_t at = path.rfind(u'/'); at != std::u16string::npos && at > 0; at = path.rfind(u'/', at - 1)) {
        const std::u16string_view renamed = m_parents.of(path.substr(0, at));
        if (renamed.empty() || path.substr(0, at) == renamed) continue;
        const kestrel::Block* const below =
            m_versions.next.model.findByPath(std::u16string(renamed).append(path.substr(at)));
        const Position candidate = m_versions.next.at(below).value_or(kNone);
        if (isUntaken(candidate) && m_versions.likeness(block, candidate) >= kLikelyRenamed)
            return match(block, candidate, MatchHow::rule);
    }
}

// Names decide among blocks that have the same ports, and, less strictly, among those that have a telling one in
// common.
void BlockMatching::matchAlikeNames() {
    const auto withSet = [](auto nameOf) {
        return [nameOf](const VersionBlocks& version, Position i) {
            return setKey(version, i).append(nameOf(std::u16string_view(version.path(i))));
        };
    };
    const auto plainLast = [](std::u16string_view path) { return plainName(lastSegment(path)); };
    const auto isStrong = [this](Position block, Position) { return !m_versions.isWeak(block); };
    matchUnique(Among::open, withSet(lastTwoSegments), isStrong);
    matchUnique(Among::open, withSet(lastSegment), isStrong);
    matchUnique(Among::open, withSet(plainPath), isStrong);
    matchUnique(Among::open, withSet(plainLast), isStrong);
    const auto isEven = [this](Position block, Position candidate) {
        const bool areNamesFree = !m_versions.next.model.findByPath(m_versions.old.path(block)) &&
                                  !m_versions.old.model.findByPath(m_versions.next.path(candidate));
        return areNamesFree && areAsMany(m_versions.old.sets[block]);
    };
    matchUnique(Among::all, withSet(plainPath), isEven);
    matchUnique(Among::all, withSet(plainLast), isEven);
    const auto byName = [plainLast](const VersionBlocks& version, Position i) { return plainLast(version.path(i)); };
    matchUnique(Among::open, byName, [this](Position block, Position candidate) {
        return byPath(block) != candidate && m_versions.isTelling(block, candidate);
    });
}

// The block with most names in common, where no other comes near, seen from both sides.
void BlockMatching::matchLikeness() {
    const Likenesses likenesses = findLikenesses();
    for (const auto& [block, best] : likenesses.ofOld) {
        const BestLikeness& back = likenesses.ofNew.at(best.first);
        if (isFree(block) && best.isClear() && back.first == block && back.isClear() && byPath(block) != best.first &&
            m_versions.isTelling(block, best.first))
            match(block, best.first, MatchHow::rule);
    }
}

BlockMatching::Likenesses BlockMatching::findLikenesses() const {
    std::unordered_map<std::uint32_t, std::vector<Position>> holders;
    for (Position i = 0; i < m_toOld.size(); ++i) {
        if (!isUntaken(i)) continue;
        for (const std::uint32_t name : m_versions.next.names[i]) holders[name].push_back(i);
    }
    Likenesses found;
    for (Position i = 0; i < m_matches.size(); ++i) {
        if (!isOpen(i)) continue;
        std::set<Position> candidates;
        for (const std::uint32_t name : m_versions.old.names[i])
            if (const auto at = holders.find(name); at != holders.end() && at->second.size() <= kMostSharing)
                candidates.insert(at->second.begin(), at->second.end());
        for (const Position candidate : candidates) {
            const double likeness = m_versions.likeness(i, candidate);
            found.ofOld[i].offer(candidate, likeness);
            found.ofNew[candidate].offer(i, likeness);
        }
    }
    return found;
}

}  // namespace workbench
