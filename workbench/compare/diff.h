#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "workbench/model_file/model_file.h"

/// How two model files differ.
namespace workbench {

struct FieldChange {
    std::string field;
    std::string before, after;  ///< JSON; empty where the field is not there
};

struct RecordChange {
    std::u16string uuid;
    std::string what;  ///< "Sensors/Speed:1" or an observer's type, as it is now, else as it was
    std::optional<std::size_t> before, after;  ///< positions in the lists, 0-based
    bool isMoved = false;                      ///< the signal is on another block, port or chart item
    std::vector<FieldChange> fields = {};
};

struct RecordsDiff {
    std::vector<RecordChange> added, removed, changed;
    /// The fewest of those that are in both lists and stand elsewhere among them.
    std::vector<RecordChange> reordered;
    std::size_t unchanged = 0;

    bool isSame() const noexcept { return added.empty() && removed.empty() && changed.empty() && reordered.empty(); }
};

struct BlockChange {
    const kestrel::Block* before = nullptr;  ///< null for an added one
    const kestrel::Block* after = nullptr;   ///< null for a removed one
    std::vector<std::u16string> addedPorts = {}, removedPorts = {};
    bool isReordered = false;  ///< the ports that both have stand in another order
    bool isChartChanged = false;
};

/// Refers to the blocks of both files.
struct ModelDiff {
    std::optional<FieldChange> name;
    std::vector<BlockChange> blocks;  ///< by element identifier, then by path; removed ones last
    bool areBlocksReordered = false;
    RecordsDiff signals, clients;
    std::size_t parkedBefore = 0, parkedAfter = 0;
    bool isParkedSame = true;

    bool isSame() const noexcept {
        return !name && blocks.empty() && !areBlocksReordered && signals.isSame() && clients.isSame() && isParkedSame;
    }
};

/// Signals and clients are matched by UUID. Takes time in proportion to both files.
ModelDiff diffModels(const ModelFile& before, const ModelFile& after);

/// A model file as lines for a person who reads a comparison: a line for each block, port, chart item and field.
std::string comparableText(const ModelFile& file);

/// "Sensors/Speed:1" or "Control/Mode/Engaged": what a saved signal is on.
std::string describeSignal(const hvArray* signals, std::size_t position);

}  // namespace workbench
