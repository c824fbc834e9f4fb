#pragma once

#include <string>
#include <vector>

#include "kshmi/print/output.h"

namespace kshmi {

/// Runs one command line (without the program's name) and returns the exit code: 0 done, 1 something
/// asked about is not observed, 2 an error, which is told on `output.err`. Throws nothing.
int runCommandLine(std::vector<std::string> arguments, const Output& output) noexcept;

}  // namespace kshmi
