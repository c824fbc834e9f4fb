#pragma once

#include <cstddef>
#include <limits>
#include <vector>

#include "kshmi/print/output.h"
#include "workbench/session/block_tree.h"

namespace kshmi {

struct TreeLimits {
    std::size_t lines = std::numeric_limits<std::size_t>::max();
    std::size_t ports = std::numeric_limits<std::size_t>::max();  ///< of a block, and chart items
};

/// Prints a model's blocks as a tree, each with its output ports and, for a chart, its items, and "[x]" for what is
/// observed, in green where there is colour; behind the name of a block that carries a badge itself stands "*". Ports
/// that do not fit into a line go on in the next one, and levels far down are told by their numbers. Says how many
/// ports and lines are left out; true when lines are.
bool printBlockTree(const std::vector<workbench::BlockNode>& nodes, const Output& output,
                    const TreeLimits& limits = {});

}  // namespace kshmi
