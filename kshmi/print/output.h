#pragma once

#include <cstddef>
#include <ostream>
#include <string>

namespace kshmi {

class Progress;

/// Where a command prints, and how.
struct Output {
    std::ostream& out;
    std::ostream& err;
    bool isColoured = false;
    /// Columns of a line of `out`; 0 when lines have no end, as in a file.
    std::size_t width = 0;
    /// Where `err` is a terminal: it is to be told of what takes long.
    bool isWatched = false;
    Progress* progress = nullptr;
};

/// As `workbench::enterHost`, with the host's warnings on `err` from now on.
void enterHost(std::ostream& err);

/// Says what is being done, "reading a.json", should it take long.
void tellProgress(const Output& output, std::string work);

/// How a run ends.
enum ExitCode : int { kSuccess = 0, kNotObserved = 1, kFailure = 2 };

}  // namespace kshmi
