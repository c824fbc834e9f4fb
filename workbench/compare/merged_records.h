#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "workbench/compare/merge.h"
#include "workbench/compare/saved_records.h"

namespace workbench {

/// What a list of things with keys has become on both sides: the merged order of keys. `base`, `ours` and `theirs` hold
/// each key once; `stays(key)` says whether the merged list has it.
std::vector<std::string> mergedOrder(const std::vector<std::string>& base, const std::vector<std::string>& ours,
                                     const std::vector<std::string>& theirs,
                                     const std::function<bool(const std::string&)>& stays);

/// Whether something is in the merged list, by where it is and whether its sides changed it.
enum class Presence : std::uint8_t { in, out, conflictIn, conflictOut };
Presence presenceOf(bool inBase, bool inOurs, bool inTheirs, bool isChangedByUs, bool isChangedByThem);

struct MergedRecord {
    std::string key;              ///< the UUID, and a number for a repeated one
    RecordPlace ours, theirs;     ///< `records` is null where the side does not have it
    bool isPlacedByThem = false;  ///< where it is comes from their side
    HvArrayPtr record = nullptr;  ///< 1 x 1
    std::optional<std::u16string> markedName = std::nullopt;
};

/// The merged records of one kind, in their order.
std::vector<MergedRecord> mergeRecords(RecordKind kind, const ModelFile& base, const ModelFile& ours,
                                       const ModelFile& theirs, std::vector<MergeConflict>& conflicts);

}  // namespace workbench
