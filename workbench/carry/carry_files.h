#pragma once

#include <functional>
#include <string>

#include "workbench/carry/carry.h"

namespace workbench {

/// What carrying marks reads and writes; the last three may be empty.
struct CarryFiles {
    std::string before;    ///< a model file
    std::string after;     ///< a model file without marks, or a foreign model, which is imported
    std::string output;    ///< the model file to write; empty: `after`
    std::string map;       ///< that a person has edited
    std::string proposal;  ///< such a map, to be written

    const std::string& target() const noexcept { return output.empty() ? after : output; }
};

struct CarriedFiles {
    std::u16string oldModel, newModel;  ///< names
    CarriedModel carried;
    /// What stands in the target's place and is to be replaced; nothing when it is another file than `after`.
    std::optional<FileVersion> replaced;
};

/// Reads the files and carries the marks; nothing is written. Throws `Error` for files that cannot be read, for an
/// import without an output, and as `carryMarks`.
CarriedFiles carryFiles(const CarryFiles& files, const CarryOptions& options);

/// Has `save` save the model, and writes the proposal if one is wanted: what can fail without having changed anything
/// comes first.
void saveWithProposal(const CarryFiles& files, const CarryReport& report, const std::function<void()>& save);

}  // namespace workbench
