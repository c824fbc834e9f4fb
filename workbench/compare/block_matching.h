#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "workbench/compare/block_features.h"
#include "workbench/compare/carry_map.h"

/// Which block of a next version is which of the old one.
namespace workbench {

enum class MatchBy : std::uint8_t {
    both,        ///< identifier and path; where they disagree, what the blocks have decides, or a person
    identifier,  ///< a block keeps its identifier
    path,        ///< a block keeps its path
};

/// The block that is most like one, and how like it and the next best are; 0.0 to 1.0.
struct BestLikeness {
    std::size_t first = static_cast<std::size_t>(-1);
    double likeness = 0.0, next = 0.0;
    std::size_t count = 0;  ///< of blocks that are like it at all

    void offer(std::size_t candidate, double value) noexcept;
    bool isClear() const noexcept;
};

enum class MatchHow : std::uint8_t {
    none,      ///< the block is gone
    identity,  ///< same identifier or path
    rule,      ///< renamed, found by what the two have in common
    map,       ///< a person says so
    guess,     ///< a candidate, which a person has to look at
};

struct BlockMatch {
    MatchHow how = MatchHow::none;
    const kestrel::Block* block = nullptr;  ///< in the next version; of a guess the best candidate
    std::size_t candidates = 0;             ///< of a guess
};

class BlockMatching {
public:
    /// Takes time in proportion to both models. Keeps references to all three.
    BlockMatching(const kestrel::Model& old, const kestrel::Model& next, MatchBy by, const CarryMap& map);

    const BlockMatch& of(const kestrel::Block& oldBlock) const;
    /// Whether identifiers name other blocks now than they did, so that they were not gone by.
    bool areIdentifiersRenewed() const noexcept { return m_isRenewed; }

private:
    using Position = std::size_t;
    static constexpr Position kNone = static_cast<Position>(-1);

    // By what a person says, then by identifier and path.
    void matchMapped();
    void judgeIdentifiers();
    void matchIdentities();
    void matchContradicting(Position block, Position byEid, Position byPath);
    Position byEid(Position block) const;
    Position byPath(Position block) const;
    bool hasExactlyAlike(Position block) const;
    void settleRest();

    // Renamed blocks, in renamed_blocks.cpp.
    void matchRenamed();
    void matchUniqueSets();
    void matchBelowRenamed();
    template <class KeyOf, class Accept>
    void matchUnique(KeyOf keyOf, Accept accept);
    void matchAlikeNames();
    void matchLikeness();
    struct Likenesses {
        std::unordered_map<Position, BestLikeness> ofOld, ofNew;
    };
    Likenesses findLikenesses() const;
    void notePrefixes(Position block);
    bool isInContext(Position block, Position candidate) const;

    // What remains, in block_guesses.cpp.
    void guess();
    void guessAmongAlike();
    void guessByLikeness();
    void guessByName();
    void propose(Position block, Position candidate, std::size_t candidates);

    bool isFree(Position block) const {
        return m_toNew[block] == kNone && m_matches[block].how == MatchHow::none && !m_isGone[block];
    }
    bool isUntaken(Position candidate) const { return candidate != kNone && m_toOld[candidate] == kNone; }
    void match(Position block, Position candidate, MatchHow how);

    BothVersions m_versions;
    MatchBy m_by;
    const CarryMap& m_map;
    std::vector<BlockMatch> m_matches;  ///< by old position
    std::vector<Position> m_toNew, m_toOld;
    std::vector<bool> m_isGone;  ///< old blocks that a person says are gone
    /// Old paths that became others, to the new ones; an empty one for those that became several.
    std::unordered_map<std::u16string, std::u16string> m_prefixes;
    std::unordered_map<std::uint32_t, std::size_t> m_untakenSets;  ///< how many new blocks that are not taken have it
    std::size_t m_matchedCount = 0;
    bool m_isRenewed = false;
    bool m_isTrusted = false;  ///< identifiers are
};

}  // namespace workbench
