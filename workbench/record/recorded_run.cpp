#include "workbench/record/recorded_run.h"

#include "workbench/record/run_readers.h"
#include "workbench/run_file/sqlite.h"
#include "workbench/text/csv_row.h"
#include "workbench/text/error.h"

namespace workbench {

RecordedRun readRecordedRun(const std::string& path, std::optional<int> number) {
    std::string start;
    piecesOfFile(path)(start);
    if (SqliteDatabase::isDatabase(start)) return readSqliteRun(path, number);
    if (number.value_or(1) != 1)
        throw Error({path}, "holds one run, as a CSV file does; ask for run 1, or for none", ErrorCode::request);
    return readCsvRun(path);
}

}  // namespace workbench
