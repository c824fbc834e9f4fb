#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "workbench/check/check_file.h"
#include "workbench/check/mending.h"

namespace workbench {

enum class Settling : std::uint8_t { mend, prune };

struct SettledFile {
    std::vector<Settled> settled;
    CheckedFile now;                    ///< what is found afterwards
    std::vector<std::string> warnings;  ///< of the save
};

/// Settles findings of these kinds and saves the file, unless nothing was to settle or it is a dry run. Marks that stay
/// unsettled are kept as they are. What is saved goes to the sink if there is one. Throws `Error`, and leaves the file
/// as it was, when it holds what cannot be read, does not fit at all, or has been changed since it was checked.
SettledFile settleFile(CheckedFile checked, Settling how, const FindingKinds& kinds, bool isDryRun,
                       TextSink sink = nullptr);

}  // namespace workbench
