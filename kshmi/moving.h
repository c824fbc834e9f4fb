#pragma once

#include <string>

#include "kshmi/session.h"

/// Letting a model's records follow its blocks.
namespace kshmi {

/// Moves the block at `path` and all below it. Signals follow, their subsystem paths too; so do clients whose model
/// path leads there, by identifier or, without one, by path. Throws `kestrel::ModelError` for a move that cannot be,
/// and `Error` when the host cannot align the clients; the session is not to be saved then.
void moveBlocks(Session& session, const std::u16string& path, const std::u16string& newPath);

/// Whether a path is `parent` or lies below it.
bool isAtOrBelow(std::u16string_view path, std::u16string_view parent);

}  // namespace kshmi
