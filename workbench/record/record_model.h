#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "workbench/process/unit_process.h"
#include "workbench/record/run_columns.h"
#include "workbench/run_file/run_writer.h"
#include "workbench/session/session.h"

namespace workbench {

/// How far a run is: simulated times, and the seconds that it has taken.
struct RunProgress {
    double start;
    double time;
    double until;
    double seconds;
};

struct RecordOptions {
    std::string unit = {};                       ///< path of the .fmu; empty: where the model was imported from
    std::optional<double> until = std::nullopt;  ///< nothing: where the unit's default experiment ends
    std::optional<double> step = std::nullopt;   ///< nothing: the unit's, else a 500th of the run
    std::vector<std::pair<std::string, std::string>> values = {};  ///< start values: variable and text
    std::string inputs = {};                                       ///< path of a CSV file; empty for none
    RunTarget target = {};
    UnitControl control = {};
    /// Told several times a second.
    std::function<void(const RunProgress& progress)> progress = {};
    /// A message of the unit.
    std::function<void(double time, UnitLogLevel level, std::string_view category, std::string_view text)> log = {};
    /// What is not as it was asked for, before the unit runs.
    std::function<void(const std::string& text)> warning = {};
};

struct RecordResult {
    UnitEnd end;
    double start = 0.0;
    double until = 0.0;
    double step = 0.0;
    double seconds = 0.0;       ///< that it took
    std::uint64_t samples = 0;  ///< taken of the unit
    std::vector<RunColumn> columns;
    std::string unit;  ///< path of the .fmu
};

/// Runs the unit that a model was imported from, in a process of its own, and keeps what is observed. Throws `Error`
/// when there is nothing to record, the unit cannot be run here, or what is asked for cannot be, all before the unit
/// runs; and, with the simulated time, when what is recorded cannot be written. A run that stops early is no error:
/// what was recorded by then is kept.
RecordResult recordModel(Session& session, const RecordOptions& options);

}  // namespace workbench
