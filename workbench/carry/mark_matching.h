#pragma once

#include <boost/container_hash/hash.hpp>
#include <boost/unordered/unordered_flat_map.hpp>
#include <memory>
#include <utility>

#include "workbench/carry/carried_record.h"
#include "workbench/carry/matching/block_matching.h"
#include "workbench/carry/matching/source_pairing.h"

namespace workbench {

/// What becomes of a mark, and where it goes. The texts are the models'.
struct Decision {
    CarriedMark mark;  ///< but for what the source says
    NewSource target = {};
    bool isBlockFound = true;
};

/// Decides where each mark goes.
class MarkMatching {
public:
    /// Keeps references to the models and the map.
    MarkMatching(const kestrel::Model& old, const kestrel::Model& next, const CarryOptions& options,
                 const CarryMap& map);
    ~MarkMatching();

    const BlockMatching& blocks() const noexcept { return m_blocks; }
    Decision decide(const MarkedSource& source);

private:
    struct Pairings;

    Pairings& pairingsOf(const kestrel::Block* old, const kestrel::Block& next);
    SourceMatch sourceIn(const MarkedSource& source, const kestrel::Block& block);
    BlockMatch blockOfOrphan(const MarkedSource& source);
    SourceMatch portNamed(std::u16string_view name, const kestrel::Block& block);
    void lookForHeirs(const MarkedSource& source, Decision& decision);
    Decision mapped(const MarkedSource& source, const CarryMap::Target& target, Decision decision);
    static MarkPlace placeOf(const MarkedSource& source, const NewSource& target);
    void settle(const MarkedSource& source, const BlockMatch& block, const SourceMatch& match,
                Decision& decision) const;
    static Fate fateOf(const MarkedSource& source, const BlockMatch& block, const SourceMatch& match,
                       const MarkPlace& after);

    const kestrel::Model& m_next;
    CarryOptions m_options;
    const CarryMap& m_map;
    BlockMatching m_blocks;
    using BlockPair = std::pair<const kestrel::Block*, const kestrel::Block*>;
    boost::unordered_flat_map<BlockPair, std::unique_ptr<Pairings>, boost::hash<BlockPair>> m_pairings;
    const kestrel::Block* m_lastOld = nullptr;   ///< of the pairings that were asked for last
    const kestrel::Block* m_lastNext = nullptr;  ///< null at first
    Pairings* m_last = nullptr;
};

}  // namespace workbench
