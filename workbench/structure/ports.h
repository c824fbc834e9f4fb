#pragma once

#include <optional>
#include <string>
#include <vector>

#include "workbench/change/renumbering.h"
#include "workbench/session/session.h"
#include "workbench/structure/marks.h"

/// Editing a block's output ports. Port numbers are 1-based; signals follow their ports, as when they are renumbered.
namespace workbench {

/// The number of the block's port that a number or name calls. Throws `Error` when there is none.
int portCalled(const kestrel::Model& model, const kestrel::Block& block, const std::string& text);

/// Throws `Error` for names that are empty, have NUL characters or are there twice.
void requireOutputs(const std::vector<std::u16string>& names);

/// Adds a port that gets that number, by default the last one; those behind it move on. Throws `Error` for a name or
/// number that cannot be. Returns what moved.
Renumbering addPort(Session& session, const kestrel::Block& block, const std::u16string& name,
                    std::optional<int> number = std::nullopt);

/// Removes a port; those behind it move up. Throws `Error`, with nothing changed, for marks that are not to go.
Renumbering removePort(Session& session, const kestrel::Block& block, int port, Marks marks);

/// Signals keep their names. Throws `Error` for a name that cannot be.
void renamePort(Session& session, const kestrel::Block& block, int port, const std::u16string& name);

}  // namespace workbench
