#pragma once

#include <cstddef>

#include "kshmi/print/output.h"
#include "workbench/session/block_tree.h"

namespace kshmi {

/// Prints the model's blocks as a tree, each with its output ports and, for a chart, its items, and "[x]" for what is
/// observed, in green on a terminal; behind the name of a block that carries a badge itself stands "*"; at most `most`
/// lines.
void printBlockTree(const workbench::Session& session, const Output& output, std::size_t most);

}  // namespace kshmi
