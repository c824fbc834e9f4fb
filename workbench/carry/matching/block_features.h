#pragma once

#include <boost/unordered/unordered_flat_map.hpp>
#include <boost/unordered/unordered_flat_set.hpp>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "memory_host/kestrel/model.h"

/// What blocks of two versions of a model have in common: the names of their ports and chart items.
namespace workbench {

/// Numbers for equal things, given out from 0.
template <class Key>
class Numbering {
public:
    std::uint32_t of(Key key) {
        return m_numbers.emplace(std::move(key), static_cast<std::uint32_t>(m_numbers.size())).first->second;
    }

    /// Nothing for a key that has none.
    std::optional<std::uint32_t> find(const Key& key) const {
        const auto found = m_numbers.find(key);
        return found == m_numbers.end() ? std::nullopt : std::optional(found->second);
    }

private:
    boost::unordered_flat_map<Key, std::uint32_t, std::hash<Key>> m_numbers;
};

/// One version's blocks, by their position in the model (0-based).
struct VersionBlocks {
    explicit VersionBlocks(const kestrel::Model& itsModel) : model(itsModel) {}

    const kestrel::Model& model;
    std::vector<const kestrel::Block*> blocks = {};
    boost::unordered_flat_map<const kestrel::Block*, std::size_t> positions = {};
    std::vector<std::vector<std::uint32_t>> names = {};  ///< of ports and items, sorted, each once
    std::vector<std::uint32_t> sets = {};                ///< the same number for the same names
    std::vector<std::size_t> uses = {};                  ///< of each name: how many blocks have it
    std::vector<std::size_t> setUses = {};               ///< of each set

    /// All paths that blocks are below.
    boost::unordered_flat_set<std::u16string_view, std::hash<std::u16string_view>> parents = {};

    std::size_t size() const noexcept { return blocks.size(); }
    const std::u16string& path(std::size_t block) const { return blocks[block]->path; }
    std::optional<std::size_t> at(const kestrel::Block* block) const;
};

/// Both versions, with the same numbers for the same names and sets. The models must not change meanwhile.
struct BothVersions {
    BothVersions(const kestrel::Model& oldModel, const kestrel::Model& newModel);

    /// How many names a block of each has in common.
    std::size_t shared(std::size_t oldBlock, std::size_t newBlock) const;
    /// The share of the names that both have among those that either has; 0.0 to 1.0.
    double likeness(std::size_t oldBlock, std::size_t newBlock) const;
    bool isAlike(std::size_t oldBlock, std::size_t newBlock) const { return old.sets[oldBlock] == next.sets[newBlock]; }
    /// Whether both have a name that no other block of either version has.
    bool shareRareName(std::size_t oldBlock, std::size_t newBlock) const;
    /// Whether there is more in common than names that any block might have.
    bool isTelling(std::size_t oldBlock, std::size_t newBlock) const;
    /// Whether other blocks have the block's names as well.
    bool isWeak(std::size_t oldBlock) const;
    /// Whether one block at most of each version has the set.
    bool isUniqueSet(std::uint32_t set) const;
    /// Whether one block at most of each version has the name.
    bool isRare(std::uint32_t name) const { return old.uses[name] <= 1 && next.uses[name] <= 1; }
    /// Of a port's name; nothing when no block has it.
    std::optional<std::uint32_t> numberOf(std::u16string_view name) const { return m_names.find(name); }

    VersionBlocks old;
    VersionBlocks next;

private:
    void add(VersionBlocks& version);
    void addNew(VersionBlocks& version, const kestrel::Block& block);
    std::optional<std::size_t> twinOf(const kestrel::Block& block) const;
    void appendItems(std::vector<std::uint32_t>& names, const kestrel::Chart& chart);
    std::vector<std::uint32_t> sharedNames(std::size_t oldBlock, std::size_t newBlock) const;

    Numbering<std::u16string_view> m_names;
    std::deque<std::u16string> m_itemNames;
    Numbering<std::u32string> m_sets;
};

/// The part of a path behind the last '/'.
std::u16string_view lastSegment(std::u16string_view path) noexcept;
/// The path before the last '/'; empty when there is none.
std::u16string_view parentView(std::u16string_view path) noexcept;
/// The path from the last '/' but one on; the whole path when it has no more than two parts.
std::u16string_view lastTwoSegments(std::u16string_view path) noexcept;
/// A name without case, underscores, blanks and hyphens.
std::u16string plainName(std::u16string_view name);
/// The same of a whole path, without what separates its parts, too: "Plant/Tank 1" is "Plant_Tank_1".
std::u16string plainPath(std::u16string_view path);
/// Whether two names differ in their numbers and in nothing else: "Tank 1" and "Tank 2" may well be two tanks.
bool areNumberedApart(std::u16string_view one, std::u16string_view other);

}  // namespace workbench
