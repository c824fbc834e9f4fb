#pragma once

#include <cstddef>
#include <set>
#include <string>

#include "kshmi/print/output.h"
#include "workbench/session/session.h"

namespace kshmi {

/// "[x]" or "[ ]", the observed one in green on a terminal.
std::string badge(bool isObserved, const Output& output);

/// Handles of the blocks that carry a badge in an editor, as the host answers.
std::set<double> blocksWithBadges(const workbench::Session& session);

/// Prints the model's blocks as a tree, each with its output ports and, for a chart, its items, and a badge
/// for what is observed; behind the name of a block that carries a badge itself stands "*"; at most `most` lines.
void printBlockTree(const workbench::Session& session, const Output& output, std::size_t most);

}  // namespace kshmi
