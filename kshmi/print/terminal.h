#pragma once

#include <cstddef>

/// What the user's terminal and environment ask for.
namespace kshmi {

/// Whether a stream is coloured when the user does not say: on a terminal, unless NO_COLOR is set or TERM is "dumb" or
/// missing.
bool isColourWelcome(int descriptor);

/// Columns of a line: what COLUMNS says, else the terminal's, else 80 on a terminal; 0, for no end, in a file or pipe.
std::size_t columnsOfTerminal(int descriptor);

}  // namespace kshmi
