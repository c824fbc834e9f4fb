#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "workbench/carry/carry.h"
#include "workbench/carry/matching/source_pairing.h"
#include "workbench/compare/saved_records.h"

namespace workbench {

/// What a saved signal was put on, as far as the old version tells. The texts are that version's.
struct MarkedSource {
    const kestrel::Block* block = nullptr;  ///< in the old version; null when it does not have it
    MarkPlace place;
    std::u16string_view savedPath, savedEid;  ///< the block's, as they are in the record
    bool isNameKnown = true;  ///< false when neither the mark nor the model says what the port was called
    bool hadSlid = false;
    bool isUnsure = false;  ///< it was parked because nobody said which of several places it is at
};

/// Where a signal goes.
struct NewSource {
    const kestrel::Block* block = nullptr;
    int port = 0;
    std::u16string_view name;
    std::uint32_t ssid = 0;
};

/// Reads what signals were put on, in time that does not depend on how large their blocks are. Keeps a reference to the
/// model, which must not change meanwhile.
class MarkedSources {
public:
    explicit MarkedSources(const kestrel::Model& old) : m_blocks(old) {}
    /// `markedName` may be null: none was kept.
    MarkedSource of(const hvArray* signals, std::size_t position, const std::u16string* markedName);

private:
    const ItemNames& itemsOf(const kestrel::Block& block);
    std::optional<std::u16string_view> nameNow(const MarkedSource& source);

    SavedBlocks m_blocks;
    std::unordered_map<const kestrel::Block*, ItemNames> m_items;  ///< of charts
};

/// Sets what names the block, the port or item, and the signal where it has the port's name.
void putOn(hvArray* signals, std::size_t position, const MarkPlace& before, const kestrel::Block& block,
           const MarkPlace& after);

/// Has clients name the new model where they named the old one, and the paths and identifiers of blocks.
class ClientFollower {
public:
    ClientFollower(const kestrel::Model& old, const kestrel::Model& next, const BlockMatching& blocks)
        : m_old(old), m_next(next), m_blocks(blocks) {}
    /// `block` is where the client's signal went; null when that is not known.
    void follow(hvArray* clients, std::size_t position, const kestrel::Block* block) const;

private:
    void followPath(hvArray* clients, std::size_t position, const kestrel::Block* block) const;

    const kestrel::Model& m_old;
    const kestrel::Model& m_next;
    const BlockMatching& m_blocks;
};

}  // namespace workbench
