#include <algorithm>
#include <map>

#include "workbench/carry/matching/block_matching.h"

namespace workbench {

namespace {

// The digits in a path: "Tank 12" and "Vessel 12" may well be the same.
std::u16string digitsOf(const std::u16string& path) {
    std::u16string digits;
    for (const char16_t c : path)
        if (c >= u'0' && c <= u'9') digits += c;
    return digits;
}

}  // namespace

// One that was unsure is looked at once more when its candidate was found to be another block.
void BlockMatching::guess() {
    for (Position i = 0; i < m_matches.size(); ++i)
        if (isOpen(i) && m_matches[i].block && !isUntaken(m_versions.next.at(m_matches[i].block).value_or(kNone)))
            m_matches[i] = {};
    guessAmongAlike();
    guessByLikeness();
    guessByName();
}

void BlockMatching::propose(Position block, Position candidate, std::size_t candidates) {
    const kestrel::Block* const best = candidate == kNone ? nullptr : m_versions.next.blocks[candidate];
    m_matches[block] = {MatchHow::guess, best, candidates};
}

// Several blocks have the same names: first those with the same digits go together, then the rest in their order.
void BlockMatching::guessAmongAlike() {
    std::map<std::uint32_t, std::pair<std::vector<Position>, std::vector<Position>>> groups;
    for (Position i = 0; i < m_matches.size(); ++i)
        if (isFree(i) && !m_versions.old.names[i].empty()) groups[m_versions.old.sets[i]].first.push_back(i);
    for (Position i = 0; i < m_toOld.size(); ++i)
        if (const auto found = groups.find(m_versions.next.sets[i]); isUntaken(i) && found != groups.end())
            found->second.second.push_back(i);
    for (auto& [set, group] : groups) {
        auto& [blocks, candidates] = group;
        if (candidates.empty()) continue;
        const auto byDigits = [](const VersionBlocks& version) {
            return [&version](Position a, Position b) {
                return std::pair(digitsOf(version.path(a)), a) < std::pair(digitsOf(version.path(b)), b);
            };
        };
        if (blocks.size() == candidates.size()) {
            std::sort(blocks.begin(), blocks.end(), byDigits(m_versions.old));
            std::sort(candidates.begin(), candidates.end(), byDigits(m_versions.next));
        }
        for (std::size_t i = 0; i < blocks.size(); ++i)
            propose(blocks[i], i < candidates.size() ? candidates[i] : kNone, candidates.size());
    }
}

void BlockMatching::guessByLikeness() {
    for (const auto& [block, best] : findLikenesses().ofOld)
        if (isFree(block)) propose(block, best.first, best.count);
}

// One that has the identifier, or the name and nothing else, in common.
void BlockMatching::guessByName() {
    std::unordered_map<std::u16string, std::vector<Position>> byName;
    for (Position i = 0; i < m_toOld.size(); ++i)
        if (isUntaken(i)) byName[plainName(lastSegment(m_versions.next.path(i)))].push_back(i);
    for (Position i = 0; i < m_matches.size(); ++i) {
        if (!isFree(i)) continue;
        const Position eid = byEid(i);
        const auto found = byName.find(plainName(lastSegment(m_versions.old.path(i))));
        if (found != byName.end())
            propose(i, found->second.front(), found->second.size());
        else if (isUntaken(eid))
            propose(i, eid, 1);
    }
}

}  // namespace workbench
