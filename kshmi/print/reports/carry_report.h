#pragma once

#include <string>

#include "kshmi/print/output.h"
#include "workbench/carry/carry.h"

namespace kshmi {

/// What is told of carrying marks from one version to the next.
struct CarryRun {
    std::string before, after, output;  ///< files
    std::u16string oldModel, newModel;
    bool isDryRun = false;
};

/// Tells what became of the marks: the counts, and a line for each that is not the same.
void printCarry(const workbench::CarryReport& report, const CarryRun& run, bool showsAll, const Output& output);
/// The same as one JSON object.
void printCarryJson(const workbench::CarryReport& report, const CarryRun& run, const Output& output);

}  // namespace kshmi
