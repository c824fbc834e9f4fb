#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "workbench/carry/carry_map.h"
#include "workbench/carry/matching/block_features.h"
#include "workbench/carry/matching/matched_parents.h"

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
    /// Whether identifiers stay with their blocks, as far as can be seen.
    bool areIdentifiersTrusted() const noexcept { return m_isTrusted; }
    /// Blocks that a port may have gone to whose block, if there was one, does not have it any more: they have a port
    /// of that name, were not found to be another block that had it, and the name or the block tells enough. In order.
    std::vector<const kestrel::Block*> heirs(const kestrel::Block* oldBlock, std::u16string_view name) const;

private:
    using Position = std::size_t;
    static constexpr Position kNone = static_cast<Position>(-1);

    // By what a person says, then by identifier and path, in block_identities.cpp.
    void matchMapped();
    void judgeIdentifiers();
    struct Evidence {
        std::size_t agreeing = 0, unclear = 0, contradicting = 0;
        std::size_t differing = 0;  ///< all where identifier and path, or ports, lead to two blocks
    };
    void weigh(Position block, Evidence& evidence) const;
    void matchIdentities();
    struct Claim {
        enum class How : std::uint8_t { none, take, unsure } how = How::none;
        Position candidate = kNone;
        bool isByEid = false;
    };
    using Claims = std::vector<Claim>;
    Claim claimOf(Position block) const;
    Claim claimOf(Position block, Position candidate, bool isByEid, bool isByPath) const;
    Claim contestedClaim(Position block, Position byEid, Position byPath) const;
    void settleContests(Claims& claims) const;
    void settleContest(const std::vector<Position>& blocks, Claims& claims) const;
    void findSameKeys();
    Position byEid(Position block) const { return m_withEid[block]; }
    Position byPath(Position block) const { return m_withPath[block]; }
    Position exactlyAlike(Position block) const;
    bool isFromPath(Position block, Position candidate) const;
    bool isExactlyAnother(Position block, Position candidate) const;
    bool hasKeptAll(Position block, Position candidate) const;
    bool isExchanged(Position block, Position candidate) const;
    Position rivalOf(Position block, Position candidate) const;
    bool isOwned(Position candidate, Position block) const;
    bool isClearlyElsewhere(Position block, Position candidate, Position rival) const;
    void settleRest();

    // Renamed blocks, in renamed_blocks.cpp.
    void matchRenamed();
    bool isAnythingLeft() const;
    void matchUniqueSets();
    void matchBelowRenamed();
    void matchBelow(Position block);
    void matchAmongSiblings();
    enum class Among : std::uint8_t { open, all };
    template <class KeyOf, class Accept>
    void matchUnique(Among among, KeyOf keyOf, Accept accept);
    void matchAlikeNames();
    void matchLikeness();
    struct Likenesses {
        std::unordered_map<Position, BestLikeness> ofOld, ofNew;
    };
    Likenesses findLikenesses() const;
    bool isBetweenSame(Position block, Position candidate) const;
    bool isAloneInNew(Position block, Position candidate) const;
    bool isInContext(Position block, Position candidate) const;

    // What remains, in block_guesses.cpp.
    void guess();
    void guessAmongAlike();
    void guessByLikeness();
    void guessByName();
    void propose(Position block, Position candidate, std::size_t candidates);

    /// Not found, and not said to be gone; it may be unsure.
    bool isOpen(Position block) const { return m_toNew[block] == kNone && !m_isGone[block]; }
    bool isFree(Position block) const { return isOpen(block) && m_matches[block].how == MatchHow::none; }
    bool isUntaken(Position candidate) const { return candidate != kNone && m_toOld[candidate] == kNone; }
    void match(Position block, Position candidate, MatchHow how);
    void gatherHolders();
    /// New blocks with the name, in order.
    std::span<const Position> holdersOf(std::uint32_t name) const {
        return std::span(m_holders).subspan(m_holderStarts[name], m_holderStarts[name + 1] - m_holderStarts[name]);
    }
    /// Whether as many old blocks with the set are to be found as there are new ones for them.
    bool areAsMany(std::uint32_t set) const { return m_openWithSet[set] == m_untakenWithSet[set]; }

    BothVersions m_versions;
    MatchBy m_by;
    const CarryMap& m_map;
    std::vector<BlockMatch> m_matches;  ///< by old position
    std::vector<Position> m_toNew, m_toOld;
    std::vector<bool> m_isGone;                                ///< old blocks that a person says are gone
    std::vector<Position> m_oldWithSet, m_newWithSet;          ///< one of the blocks with each set
    std::vector<std::size_t> m_openWithSet, m_untakenWithSet;  ///< how many old and new blocks have it
    std::vector<Position> m_holders;                           ///< new blocks with the first name, with the second, ...
    std::vector<std::size_t> m_holderStarts;                   ///< in them, of each name, and the end
    std::vector<Position> m_withEid, m_withPath;               ///< the new blocks with each old one's
    MatchedParents m_parents;
    std::size_t m_matchedCount = 0;
    bool m_isRenewed = false;
    bool m_isTrusted = false;
    bool m_areNumbers = false;  ///< identifiers count the blocks of each version
};

}  // namespace workbench
