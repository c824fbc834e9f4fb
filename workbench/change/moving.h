#pragma once

#include <string>

#include "workbench/session/session.h"

/// Letting a model's records follow its blocks.
namespace workbench {

/// Moves the block at `path` and all below it. Signals follow, their subsystem paths too; so do clients whose model
/// path leads there, by identifier or, without one, by path. Throws `kestrel::ModelError` for a move that cannot be,
/// and `Error` when the host cannot align the clients; the session is not to be saved then.
void moveBlocks(Session& session, const std::u16string& path, const std::u16string& newPath);

}  // namespace workbench
