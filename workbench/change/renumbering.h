#pragma once

#include <string>
#include <vector>

#include "workbench/session/session.h"

namespace workbench {

/// What becomes of a port; numbers are 1-based.
struct PortChange {
    int from = 0;
    int to = 0;           ///< 0: deleted
    std::u16string name;  ///< the port's, or the signal's on it
};

struct Renumbering {
    std::vector<PortChange> ports;    ///< those that do not stay as they are, in their old order
    std::vector<PortChange> signals;  ///< on those ports, in the set's order; `to` 0: lost, the block's port is gone
};

/// Gives the block's output ports new numbers, as an editor does: `numbers[k]` is the new one of port k + 1, 0 for a
/// deleted one; further ports keep theirs. What remains must be numbered 1, 2, ... without gaps. Signals follow;
/// those on deleted ports are removed from the set. Throws `Error` for numbers that cannot be, with nothing changed.
Renumbering renumberPorts(Session& session, const kestrel::Block& block, const std::vector<int>& numbers);
/// The same for a block that gets those outputs, which may be new ones; `numbers` has all old ports.
Renumbering replacePorts(Session& session, const kestrel::Block& block, const std::vector<int>& numbers,
                         std::vector<std::u16string> outputs);

}  // namespace workbench
