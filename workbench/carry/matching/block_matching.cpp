#include "workbench/carry/matching/block_matching.h"

#include <algorithm>
#include <numeric>

namespace workbench {

namespace {

// A name that more blocks have tells nothing.
constexpr std::size_t kMostHeirs = 32;

std::ptrdiff_t countOf(std::u16string_view name, const VersionBlocks& version, std::size_t block) {
    return std::ranges::count(version.blocks[block]->outputs, name);
}

}  // namespace

BlockMatching::BlockMatching(const kestrel::Model& old, const kestrel::Model& next, MatchBy by, const CarryMap& map)
    : m_versions(old, next),
      m_by(by),
      m_map(map),
      m_matches(m_versions.old.size()),
      m_toNew(m_versions.old.size(), kNone),
      m_toOld(m_versions.next.size(), kNone),
      m_isGone(m_versions.old.size()),
      m_oldWithSet(m_versions.old.setUses.size(), kNone),
      m_newWithSet(m_versions.next.setUses.size(), kNone),
      m_openWithSet(m_versions.old.setUses),
      m_untakenWithSet(m_versions.next.setUses) {
    for (Position i = 0; i < m_versions.old.size(); ++i) m_oldWithSet[m_versions.old.sets[i]] = i;
    for (Position i = 0; i < m_versions.next.size(); ++i) m_newWithSet[m_versions.next.sets[i]] = i;
    gatherHolders();
    findSameKeys();
    matchMapped();
    judgeIdentifiers();
    matchIdentities();
    matchRenamed();
    settleRest();
    guess();
}

void BlockMatching::gatherHolders() {
    const std::vector<std::size_t>& uses = m_versions.next.uses;
    m_holderStarts.resize(uses.size() + 1);
    std::partial_sum(uses.begin(), uses.end(), m_holderStarts.begin() + 1);
    m_holders.resize(m_holderStarts.back());
    std::vector<std::size_t> ends = m_holderStarts;
    for (Position i = 0; i < m_versions.next.size(); ++i)
        for (const std::uint32_t name : m_versions.next.names[i]) m_holders[ends[name]++] = i;
}

const BlockMatch& BlockMatching::of(const kestrel::Block& oldBlock) const {
    return m_matches[*m_versions.old.at(&oldBlock)];
}

std::vector<const kestrel::Block*> BlockMatching::heirs(const kestrel::Block* oldBlock,
                                                        std::u16string_view name) const {
    std::vector<const kestrel::Block*> found;
    const std::optional<std::uint32_t> number = m_versions.numberOf(name);
    const auto holders = number ? holdersOf(*number) : std::span<const Position>();
    if (holders.size() > kMostHeirs) return found;
    const std::optional<Position> block = m_versions.old.at(oldBlock);
    for (const Position candidate : holders) {
        const Position was = m_toOld[candidate];
        const bool hadIt =
            was != kNone && countOf(name, m_versions.old, was) >= countOf(name, m_versions.next, candidate);
        const bool tells = m_versions.isRare(*number) || (block && m_versions.shareRareName(*block, candidate));
        if (!hadIt && tells) found.push_back(m_versions.next.blocks[candidate]);
    }
    return found;
}

void BlockMatching::match(Position block, Position candidate, MatchHow how) {
    m_matches[block] = {how, m_versions.next.blocks[candidate], 1};
    --m_openWithSet[m_versions.old.sets[block]];
    if (isUntaken(candidate)) --m_untakenWithSet[m_versions.next.sets[candidate]];
    m_toNew[block] = candidate;
    m_toOld[candidate] = block;
    ++m_matchedCount;
    m_parents.note(m_versions.old.path(block), m_versions.next.path(candidate));
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

// A block at its path that has none of its ports any more is the same one unless another was found.
void BlockMatching::settleRest() {
    for (Position i = 0; i < m_matches.size(); ++i)
        if (const Position path = byPath(i); isFree(i) && isUntaken(path) && m_versions.shared(i, path) == 0)
            match(i, path, MatchHow::identity);
}

}  // namespace workbench
