#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "host/hv_array.h"

namespace workbench {

enum class RecordKind : std::uint8_t { signal, client };

/// What the sources of signals were called when they were marked or last confirmed, in the signals' order: a port's or
/// a datum's name, a state's path, empty for a chart. Nothing for a signal that was never confirmed.
using MarkedNameList = std::vector<std::optional<std::u16string>>;

/// How many records are host values at a time.
inline constexpr std::size_t kSlice = 256;

/// Signals or clients that follow one another in a model.
struct RecordSlice {
    std::size_t first = 0;         ///< position of the first one in the model, 0-based
    HvArrayPtr records;            ///< N x 1 struct array with the saved fields
    MarkedNameList markedNames{};  ///< of signals; the last ones may be left out
};

/// Takes the next slice of what is written: an N x 1 struct array, null for none, with the marked names of signals.
using SliceSink = std::function<void(const hvArray* records, const MarkedNameList& markedNames)>;
/// Hands over all records of one kind, slice by slice.
using RecordSource = std::function<void(const SliceSink& sink)>;

}  // namespace workbench
