#pragma once

#include <functional>

#include "kshmi/print/output.h"

namespace CLI {
class App;
}

/// The commands. Each function describes its command to the parser and, once the user has chosen it, has `run` do it.
/// A run returns the exit code and throws `workbench::Error`, or the host's exception, when it cannot do its work. A
/// model file is changed as a whole or not at all, and never in a dry run.
namespace kshmi {

/// The command that the user chose, with its arguments.
using Run = std::function<int(const Output&)>;

void addTour(CLI::App& app, Run& run);
void addShow(CLI::App& app, Run& run);
void addMark(CLI::App& app, Run& run);
void addSet(CLI::App& app, Run& run);
void addUnmark(CLI::App& app, Run& run);
void addQuery(CLI::App& app, Run& run);
void addObserve(CLI::App& app, Run& run);
void addUnobserve(CLI::App& app, Run& run);
void addClients(CLI::App& app, Run& run);
void addPorts(CLI::App& app, Run& run);
void addRename(CLI::App& app, Run& run);
void addMove(CLI::App& app, Run& run);
void addRenumber(CLI::App& app, Run& run);
void addCheck(CLI::App& app, Run& run);
void addPrune(CLI::App& app, Run& run);
void addReport(CLI::App& app, Run& run);
void addImport(CLI::App& app, Run& run);
void addRecord(CLI::App& app, Run& run);
void addDiff(CLI::App& app, Run& run);
void addMerge(CLI::App& app, Run& run);
void addCarry(CLI::App& app, Run& run);
void addExample(CLI::App& app, Run& run);
void addHelp(CLI::App& app, Run& run);
void addCompletion(CLI::App& app, Run& run);
void addNew(CLI::App& app, Run& run);
void addBlock(CLI::App& app, Run& run);
void addPort(CLI::App& app, Run& run);
void addChart(CLI::App& app, Run& run);

}  // namespace kshmi
