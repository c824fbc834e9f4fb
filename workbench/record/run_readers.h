#pragma once

#include <optional>
#include <string>

#include "workbench/record/recorded_run.h"
#include "workbench/text/csv_row.h"

/// What `readRecordedRun` chooses from.
namespace workbench {

/// `file` is what it is called in messages.
RecordedRun readCsvRun(const std::string& file, TextSource source);
RecordedRun readSqliteRun(const std::string& path, std::optional<int> number);

}  // namespace workbench
