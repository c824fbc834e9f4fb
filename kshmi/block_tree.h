#pragma once

#include <cstddef>
#include <string>

#include "kshmi/output.h"
#include "kshmi/session.h"

namespace kshmi {

/// "[x]" or "[ ]", the observed one in green on a terminal.
std::string badge(bool isObserved, const Output& output);

/// Prints the model's blocks as a tree, each with its output ports and, for a chart, its items, and a badge
/// for what is observed; at most `most` lines.
void printBlockTree(const Session& session, const Output& output, std::size_t most);

}  // namespace kshmi
