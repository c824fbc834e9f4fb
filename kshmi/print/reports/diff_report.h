#pragma once

#include "kshmi/print/output.h"
#include "workbench/compare/diff.h"
#include "workbench/compare/merge.h"

namespace kshmi {

/// What two model files are called where their difference is told.
struct ComparedFiles {
    std::string before, after;
};

/// Tells a difference line by line: '+' added, '-' removed, '~' changed, '>' in another place of the order.
void printDiff(const workbench::ModelDiff& diff, const ComparedFiles& files, bool showsAll, const Output& output);
/// The same as one JSON object.
void printDiffJson(const workbench::ModelDiff& diff, const ComparedFiles& files, const workbench::ModelFile& before,
                   const workbench::ModelFile& after, const Output& output);

/// Tells the conflicts of a merge, on `output.err`.
void printConflicts(const workbench::MergedModel& merged, const std::string& file, bool showsAll, const Output& output);
void printMergeJson(const workbench::MergedModel& merged, const std::string& file, bool isDryRun, const Output& output);

}  // namespace kshmi
