#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "workbench/session/session.h"
#include "workbench/structure/marks.h"

/// Adding blocks to a model and removing them. Paths are below the model.
namespace workbench {

struct NewBlock {
    std::u16string path;
    std::string eid;  ///< UTF-8; empty for one that nothing in the file has or had
    std::vector<std::u16string> outputs;
    bool isChart = false;
};

/// Adds a block; its parents need not be there. Throws `Error` for a path, an identifier or outputs that cannot be.
const kestrel::Block& addBlock(Session& session, NewBlock block);

struct RemovedBlocks {
    std::vector<std::u16string> blocks;  ///< in the model's order
    std::size_t signals = 0;
};

/// Removes the block at the path, and all below it when that is asked for: with it, the path may be a mere parent's.
/// Throws `Error`, with nothing changed, when there is none, and for blocks below and signals that are not to go.
RemovedBlocks removeBlocks(Session& session, const std::u16string& path, Below below, Marks marks);

/// The path of a block that gets a new name and stays where it is. Throws `Error` for a name that cannot be.
std::u16string renamedPath(const std::u16string& path, const std::u16string& name);

}  // namespace workbench
