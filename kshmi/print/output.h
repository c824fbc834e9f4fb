#pragma once

#include <ostream>

namespace kshmi {

/// Where a command prints.
struct Output {
    std::ostream& out;
    std::ostream& err;
    /// Colour is for terminals only.
    bool isTerminal = false;
};

/// As `workbench::enterHost`, with the host's warnings on `err` from now on.
void enterHost(std::ostream& err);

/// How a run ends.
enum ExitCode : int { kSuccess = 0, kNotObserved = 1, kFailure = 2 };

}  // namespace kshmi
