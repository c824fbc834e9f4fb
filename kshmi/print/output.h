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

/// How a run ends.
enum ExitCode : int { kSuccess = 0, kNotObserved = 1, kFailure = 2 };

}  // namespace kshmi
