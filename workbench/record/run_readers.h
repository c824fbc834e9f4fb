#pragma once

#include <optional>
#include <string>

#include "workbench/record/recorded_run.h"

/// What `readRecordedRun` chooses from.
namespace workbench {

RecordedRun readCsvRun(const std::string& path);
RecordedRun readSqliteRun(const std::string& path, std::optional<int> number);

}  // namespace workbench
