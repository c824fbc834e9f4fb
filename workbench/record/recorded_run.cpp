#include "workbench/record/recorded_run.h"

#include <utility>

#include "workbench/files/standard_stream.h"
#include "workbench/record/run_readers.h"
#include "workbench/run_file/sqlite.h"
#include "workbench/text/csv_row.h"
#include "workbench/text/error.h"

namespace workbench {

namespace {

// A pipe is read only once: what was looked at comes first, then the rest.
TextSource chained(std::string start, TextSource rest) {
    return [start = std::move(start), rest = std::move(rest)](std::string& buffer) mutable {
        if (start.empty()) return rest(buffer);
        buffer += std::exchange(start, {});
        return true;
    };
}

TextSource textSourceOf(const std::string& path) {
    if (path != kStandardStream) return piecesOfFile(path);
    return chained(readStandardInput(), [](std::string&) { return false; });
}

}  // namespace

RecordedRun readRecordedRun(const std::string& path, std::optional<int> number) {
    const std::string called = calledInMessages(path);
    TextSource source = textSourceOf(path);
    std::string start;
    source(start);
    const bool isDatabase = SqliteDatabase::isDatabase(start);
    if (isDatabase && path == kStandardStream)
        throw Error({called}, "is a database, which can only be read as a file; name it", ErrorCode::request);
    if (isDatabase) return readSqliteRun(path, number);
    if (number.value_or(1) != 1)
        throw Error({called}, "holds one run, as a CSV file does; ask for run 1, or for none", ErrorCode::request);
    return readCsvRun(called, chained(std::move(start), std::move(source)));
}

}  // namespace workbench
