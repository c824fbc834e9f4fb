#pragma once

#include <string>
#include <vector>

#include "memory_host/kestrel/model.h"
#include "workbench/import/import_notes.h"

namespace workbench {

/// What an import takes out of a foreign file. Texts are UTF-8.
struct Structure {
    std::string version;  ///< of the standard, as the file gives it
    std::string name;     ///< of the model, as the file gives it; may be empty
    /// In the file's order; with path, source and ports, still without element identifiers. A block's source is what
    /// it is called in the file, and no two are alike.
    std::vector<kestrel::Block> blocks;
    ImportNotes warnings;
    ImportNotes dropped;  ///< what the file has and the blocks have not
};

}  // namespace workbench
