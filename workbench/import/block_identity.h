#pragma once

#include <string>
#include <vector>

#include "memory_host/kestrel/model.h"
#include "workbench/model_file/origin.h"

namespace workbench {

/// The blocks that an earlier version of a model had, and has lost before.
struct KnownBlocks {
    const kestrel::Model* model = nullptr;
    const std::vector<GoneBlock>* gone = nullptr;
};

/// Gives each block its element identifier. A block that is known, by its source or else by its path, keeps its own;
/// that of a new one follows from its source and is none that a known block has or had. The same blocks with the same
/// known ones always get the same. Returns the known blocks that are not among them.
std::vector<GoneBlock> assignIdentifiers(std::vector<kestrel::Block>& blocks, const KnownBlocks& known);

}  // namespace workbench
