#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

#include "workbench/run_file/value_kind.h"

namespace workbench {

class Session;

/// One recorded signal, or one element of an array, and its samples. Texts are UTF-8.
struct RecordedColumn {
    std::string title;  ///< no other column of the run has it
    ValueKind kind = ValueKind::real;
    std::string unit;      ///< of the values; empty when there is none or the file does not say
    ValueNames names;      ///< of an enumeration's values, as far as the file says
    std::string signal;    ///< UUID; empty when the file does not say
    std::string block;     ///< full path, model name in front; empty when the file does not say
    int port = 0;          ///< 1-based; 0 when the file does not say
    std::string portName;  ///< empty when the file does not say
    std::string element;   ///< of an array: "[2]", "[1,3]"; empty for a scalar
    /// One for each sample, ascending; two samples of an event have the same time.
    std::vector<double> times;
    /// One for each sample: numbers as they are, as far as a double holds them, Booleans as 0 and 1. Empty for texts
    /// and binary values.
    std::vector<double> values;
    /// One for each sample of a text or binary value, the latter in hexadecimal digits; else empty.
    std::vector<std::string> texts;
};

/// A recorded run, in memory as a whole.
struct RecordedRun {
    std::string file;
    int number = 1;                     ///< 1-based, of the runs in the file
    int runCount = 1;                   ///< how many runs the file holds
    std::string model;                  ///< name; empty when the file does not say
    std::string started;                ///< "2026-03-01T12:00:00Z"; empty when the file does not say
    std::optional<double> start, stop;  ///< simulated seconds: where it began, and where it ended, or is by now
    std::optional<double> until;        ///< where it was to end; nothing when the file does not say
    /// How it ended: "done", "interrupted", "failed", ...; "running" when it has not, or was cut off; empty when the
    /// file does not say.
    std::string outcome;
    std::string message;  ///< why it stopped early; empty when it did not, or the file does not say
    std::vector<RecordedColumn> columns;
};

/// Reads a run that `kshmi record` wrote: a CSV file, whose first column is the time and which says nothing of a column
/// but its title, or an SQLite database, where `number` chooses a run, the last one if it is left out. Which it is, is
/// told by the contents; "-" is standard input, for CSV. Throws `Error` for a file that cannot be read or is none, and
/// for a run that it has not.
RecordedRun readRecordedRun(const std::string& path, std::optional<int> number = std::nullopt);

/// Fills in signal, block, port and element of columns that lack them, by their titles: those that a recording of the
/// model would give them. Columns that fit no signal stay as they are. True when all columns now have a signal.
bool identifyColumns(RecordedRun& run, const Session& session);

/// What each of the model's signals is called in a recording, in the signals' order: its name, else its port's, made
/// unique by a number behind it: "speed (2)". Columns of an array's elements have "[1]" behind that.
std::vector<std::string> columnTitles(const Session& session);

/// Gives out titles, each one once; "time" is taken.
class UniqueTitles {
public:
    /// The title itself, or with the first number behind it that is free: "a (2)".
    std::string take(const std::string& title);

private:
    std::unordered_set<std::string> m_taken{"time"};
};

}  // namespace workbench
