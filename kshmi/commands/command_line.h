#pragma once

#include <string>
#include <vector>

#include "kshmi/print/output.h"

namespace kshmi {

/// Runs one command line (without the program's name) and returns the exit code, one of `ExitCode`. Errors
/// are told on `output.err`. Throws nothing.
int runCommandLine(std::vector<std::string> arguments, const Output& output) noexcept;

}  // namespace kshmi
