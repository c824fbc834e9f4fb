#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "workbench/check/check_file.h"
#include "workbench/check/mending.h"
#include "workbench/check/settling.h"

namespace kshmi {

/// A word of a command line that can be pasted into a shell.
std::string shellWord(const std::string& text);

/// The command that settles a finding, "correct it in the file" when there is none.
std::string remedyOf(const workbench::Finding& finding);

/// Two lines a finding: "FILE:LINE: error KS301: text [/json/pointer]", and the remedy.
void printFindings(const workbench::CheckedFile& checked, std::ostream& out);

void appendSettled(std::string& out, const workbench::Settled& one);
/// Appends what was found in a file, and what was settled, as a JSON object.
void appendCheckedFile(std::string& out, const workbench::CheckedFile& checked,
                       const std::vector<workbench::Settled>& settled);

/// What was removed from the file, as one JSON object.
void printPruneJson(const workbench::SettledFile& pruned, const std::string& file, bool isDryRun, std::ostream& out);

/// How many findings there are.
struct FindingCounts {
    std::size_t errors = 0;
    std::size_t warnings = 0;
    std::size_t notes = 0;

    void add(const workbench::CheckedFile& checked);
};
/// "2 errors, 1 warning"; "nothing found".
std::string textOf(const FindingCounts& counts);

}  // namespace kshmi
