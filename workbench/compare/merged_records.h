#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "workbench/compare/merge.h"
#include "workbench/compare/saved_records.h"

namespace workbench {

/// Numbers for the keys of the lists that are merged, from 0.
class MergeKeys {
public:
    std::uint32_t of(const std::string& key);
    const std::string& text(std::uint32_t number) const { return *m_texts[number]; }
    std::size_t size() const noexcept { return m_texts.size(); }

private:
    std::unordered_map<std::string, std::uint32_t> m_numbers;
    std::vector<const std::string*> m_texts;
};

/// What a list of things with keys has become on both sides: the merged order of keys. `base`, `ours` and `theirs` hold
/// each key once; `stays(key)` says whether the merged list has it.
std::vector<std::uint32_t> mergedOrder(const MergeKeys& keys, const std::vector<std::uint32_t>& base,
                                       const std::vector<std::uint32_t>& ours, const std::vector<std::uint32_t>& theirs,
                                       const std::function<bool(std::uint32_t)>& stays);

/// Whether something is in the merged list, by where it is and whether its sides changed it.
enum class Presence : std::uint8_t { in, out, conflictIn, conflictOut };
Presence presenceOf(bool inBase, bool inOurs, bool inTheirs, bool isChangedByUs, bool isChangedByThem);

struct MergedRecord {
    std::uint32_t key = 0;
    RecordPlace ours, theirs;                           ///< `records` is null where the side does not have it
    bool isPlacedByThem = false;                        ///< where it is comes from their side
    std::vector<const char*> theirFields = {};          ///< what else does, of a record that ours has
    const std::u16string* markedName = nullptr;         ///< of the side that it comes from; null when none was kept
    std::optional<std::size_t> newPort = std::nullopt;  ///< 1-based, in the merged model

    /// The record that says where it is.
    const RecordPlace& place() const noexcept { return isPlacedByThem ? theirs : ours; }
};

/// The merged records of one kind, in their order.
struct MergedRecords {
    MergeKeys keys;  ///< the UUIDs, with a number for a repeated one
    std::vector<MergedRecord> records;
};
/// It keeps what the files hold by reference.
MergedRecords mergeRecords(RecordKind kind, const ModelFile& base, const ModelFile& ours, const ModelFile& theirs,
                           std::vector<MergeConflict>& conflicts);

/// The records themselves.
HvArrayPtr builtRecords(RecordKind kind, const std::vector<MergedRecord>& records);

}  // namespace workbench
