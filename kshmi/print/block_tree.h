#pragma once

#include <cstddef>
#include <limits>
#include <vector>

#include "kshmi/print/output.h"
#include "workbench/session/block_tree.h"

namespace kshmi {

/// Prints a model's blocks as a tree, each with its output ports and, for a chart, its items, and "[x]" for what is
/// observed, in green where there is colour; behind the name of a block that carries a badge itself stands "*". Ports
/// that do not fit into a line go on in the next one, and levels far down are told by their numbers. Says how many
/// ports `keepFirst` has left out; true when there are more than `most` lines, which are left out, too.
bool printBlockTree(const std::vector<workbench::BlockNode>& nodes, const Output& output,
                    std::size_t most = std::numeric_limits<std::size_t>::max());

}  // namespace kshmi
