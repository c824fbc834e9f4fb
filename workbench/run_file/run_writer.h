#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "workbench/model_file/model_file.h"
#include "workbench/process/unit_task.h"
#include "workbench/run_file/run_column.h"

namespace workbench {

/// One sample, as it is written.
struct RunRow {
    double time = 0.0;
    const std::uint64_t* slots = nullptr;
    std::string_view texts;
    const std::uint8_t* isPresent = nullptr;  ///< by column: whether it has a value here; null when all have
};

/// What a writer is told of a run before it begins.
struct RunHead {
    std::string model;
    std::string unit;  ///< path of the .fmu
    std::string hash;  ///< of its bytes
    std::string fmiVersion;
    double start = 0.0;
    double until = 0.0;
    double step = 0.0;
};

/// Keeps a run. All throw `Error` when the file cannot take it; what was written by then stays, in whole rows.
class RunWriter {
public:
    RunWriter() = default;
    RunWriter(const RunWriter&) = delete;
    RunWriter& operator=(const RunWriter&) = delete;
    virtual ~RunWriter() = default;

    virtual void write(const std::vector<RunRow>& rows) = 0;
    /// Hands on what is held back, so that others see it.
    virtual void flush() = 0;
    virtual void finish(const UnitEnd& end) = 0;
    /// Time of the last row that was handed on, also after one of these has thrown; nothing when there is none.
    virtual std::optional<double> keptUntil() const noexcept = 0;
};

enum class RunFormat : std::uint8_t { csv, sqlite };
/// By what the path ends with: ".db", ".sqlite" and ".sqlite3" are databases, all else is CSV.
RunFormat formatOf(std::string_view path) noexcept;

/// Where a run goes.
struct RunTarget {
    std::string path{kStandardStream};  ///< "-" for `sink`
    bool replaces = false;              ///< a CSV file that is there already
    TextSink sink = {};                 ///< of standard output
};

/// The columns outlive the writer. Throws `Error` when the file cannot be made, or is there already and must not be
/// replaced.
std::unique_ptr<RunWriter> makeCsvWriter(const RunTarget& target, const std::vector<RunColumn>& columns);
/// Adds a run to a database, which is made when it is not there.
std::unique_ptr<RunWriter> makeSqliteWriter(const RunTarget& target, const RunHead& head,
                                            const std::vector<RunColumn>& columns);
/// Holds rows back until they are known to be among the last ones of a column that keeps no more, or not. The writer
/// itself when there is no such column.
std::unique_ptr<RunWriter> keepingLastPoints(std::unique_ptr<RunWriter> writer, const std::vector<RunColumn>& columns,
                                             std::size_t slotCount);

}  // namespace workbench
