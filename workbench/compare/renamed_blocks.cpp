#include <algorithm>
#include <set>

#include "workbench/compare/block_matching.h"

namespace workbench {

namespace {

constexpr int kMostRounds = 8;
// A name that more blocks have tells too little to be gone by.
constexpr std::size_t kMostSharing = 32;

std::u16string parentOf(const std::u16string& path) {
    const std::size_t at = path.rfind(u'/');
    return at == std::u16string::npos ? std::u16string() : path.substr(0, at);
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
    constexpr double kLikely = 0.5;
    constexpr double kLead = 2.0;
    return likeness >= kLikely && likeness >= kLead * next;
}

void BlockMatching::matchRenamed() {
    for (int round = 0; round < kMostRounds; ++round) {
        const std::size_t before = m_matchedCount;
        matchBelowRenamed();
        matchUniqueSets();
        matchBelowRenamed();
        matchAlikeNames();
        matchBelowRenamed();
        matchLikeness();
        if (m_matchedCount == before) return;
    }
}

// What one old and one new block alone have a key in common.
template <class KeyOf, class Accept>
void BlockMatching::matchUnique(KeyOf keyOf, Accept accept) {
    struct Pair {
        Position block = kNone, candidate = kNone;
        bool isUnique = true;
    };
    std::unordered_map<std::u16string, Pair> pairs;
    const auto enter = [](Position& place, Pair& pair, Position position) {
        if (place != kNone) pair.isUnique = false;
        place = position;
    };
    for (Position i = 0; i < m_matches.size(); ++i) {
        if (!isFree(i) || m_versions.old.names[i].empty()) continue;
        Pair& pair = pairs[keyOf(m_versions.old, i)];
        enter(pair.block, pair, i);
    }
    for (Position i = 0; i < m_versions.next.size(); ++i) {
        if (!isUntaken(i)) continue;
        const auto found = pairs.find(keyOf(m_versions.next, i));
        if (found != pairs.end()) enter(found->second.candidate, found->second, i);
    }
    for (const auto& [key, pair] : pairs)
        if (pair.isUnique && pair.candidate != kNone && accept(pair.block, pair.candidate))
            match(pair.block, pair.candidate, MatchHow::rule);
}

void BlockMatching::matchUniqueSets() {
    const auto setOf = [](const VersionBlocks& version, Position i) {
        return std::u16string{static_cast<char16_t>(version.sets[i] >> 16U), static_cast<char16_t>(version.sets[i])};
    };
    matchUnique(setOf, [this](Position block, Position candidate) {
        return !m_versions.isWeak(block) || isInContext(block, candidate);
    });
}

// A block with one name that many have: it must be below the same parent, and behind or before the same block.
bool BlockMatching::isInContext(Position block, Position candidate) const {
    const std::u16string parent = parentOf(m_versions.old.path(block));
    const auto renamed = m_prefixes.find(parent);
    const std::u16string& newParent = renamed == m_prefixes.end() ? parent : renamed->second;
    if (newParent != parentOf(m_versions.next.path(candidate))) return false;
    const bool isFirst = block == 0 || candidate == 0;
    const bool isLast = block + 1 == m_toNew.size() || candidate + 1 == m_toOld.size();
    const bool fitsBefore = isFirst ? block == candidate : m_toNew[block - 1] == candidate - 1;
    const bool fitsAfter =
        isLast ? block + 1 == m_toNew.size() && candidate + 1 == m_toOld.size() : m_toNew[block + 1] == candidate + 1;
    return (fitsBefore && fitsAfter) || (fitsBefore && !isFirst) || (fitsAfter && !isLast);
}

// "Plant/Tank" is "Process/Tank" now: then "Plant" may be "Process" for others, too.
void BlockMatching::notePrefixes(Position block) {
    std::u16string before = m_versions.old.path(block);
    std::u16string after = m_versions.next.path(m_toNew[block]);
    if (before == after) return;
    while (!before.empty() && !after.empty()) {
        const auto [there, isNew] = m_prefixes.emplace(before, after);
        if (!isNew && there->second != after) there->second.clear();
        if (lastSegment(before) != lastSegment(after)) return;
        before = parentOf(before);
        after = parentOf(after);
        if (before == after) return;
    }
}

void BlockMatching::matchBelowRenamed() {
    for (Position i = 0; i < m_matches.size(); ++i) {
        if (!isFree(i) || m_versions.old.names[i].empty()) continue;
        const std::u16string& path = m_versions.old.path(i);
        for (std::size_t at = path.rfind(u'/'); at != std::u16string::npos && at > 0; at = path.rfind(u'/', at - 1)) {
            const auto renamed = m_prefixes.find(path.substr(0, at));
            if (renamed == m_prefixes.end() || renamed->second.empty()) continue;
            const kestrel::Block* const below = m_versions.next.model.findByPath(renamed->second + path.substr(at));
            const Position candidate = m_versions.next.at(below).value_or(kNone);
            if (!isUntaken(candidate) || m_versions.shared(i, candidate) == 0) continue;
            match(i, candidate, MatchHow::rule);
            break;
        }
    }
}

// Names decide among blocks that have the same ports, and, less strictly, among those that have a telling one in
// common.
void BlockMatching::matchAlikeNames() {
    const auto withSet = [](const VersionBlocks& version, Position i, std::u16string_view name) {
        std::u16string key{static_cast<char16_t>(version.sets[i] >> 16U), static_cast<char16_t>(version.sets[i])};
        return key += name;
    };
    const auto always = [](Position, Position) { return true; };
    matchUnique([&](const auto& version, Position i) { return withSet(version, i, lastTwoSegments(version.path(i))); },
                always);
    matchUnique([&](const auto& version, Position i) { return withSet(version, i, lastSegment(version.path(i))); },
                always);
    matchUnique([&](const auto& version, Position i) { return withSet(version, i, plainName(version.path(i))); },
                always);
    matchUnique(
        [&](const auto& version, Position i) { return withSet(version, i, plainName(lastSegment(version.path(i)))); },
        always);
    matchUnique([](const auto& version, Position i) { return plainName(lastSegment(version.path(i))); },
                [this](Position block, Position candidate) { return m_versions.isTelling(block, candidate); });
}

// The block with most names in common, where no other comes near, seen from both sides.
void BlockMatching::matchLikeness() {
    const Likenesses likenesses = findLikenesses();
    for (const auto& [block, best] : likenesses.ofOld) {
        const BestLikeness& back = likenesses.ofNew.at(best.first);
        if (best.isClear() && back.first == block && back.isClear() && m_versions.isTelling(block, best.first))
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
        if (!isFree(i)) continue;
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
