#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "workbench/session/session.h"

/// Letting a model's records follow its blocks.
namespace workbench {

/// The block or parent that a text names, and its new path, both below the model. Beside a block with the model's name,
/// the new path is read in the way in which the block was found. Throws `Error` for what is none.
struct MovePaths {
    std::u16string path, newPath;
};
MovePaths movePaths(const kestrel::Model& model, const std::string& block, const std::string& newPath);

/// What a move has changed.
struct Moved {
    /// Old and new path of every block, in the model's order.
    std::vector<std::pair<std::u16string, std::u16string>> blocks;
    std::size_t signals = 0;  ///< how many followed
    std::size_t clients = 0;
};

/// Moves the block at `path` and all below it; the same path changes nothing. Signals follow, their subsystem paths
/// too; so do clients whose model path leads there, by identifier or, without one, by path. Throws `Error` for a move
/// that cannot be, and when the host cannot align the clients; the session is not to be saved then.
Moved moveBlocks(Session& session, const std::u16string& path, const std::u16string& newPath);

}  // namespace workbench
