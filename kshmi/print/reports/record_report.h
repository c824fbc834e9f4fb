#pragma once

#include <string>

#include "kshmi/print/output.h"
#include "workbench/record/record_model.h"

/// How a recording went.
namespace kshmi {

/// In a line or two on `out`.
void printRecord(const workbench::RecordResult& result, const std::string& file, std::ostream& out);
void printRecordJson(const workbench::RecordResult& result, const std::string& file, const workbench::Session& session,
                     std::ostream& out);
/// Why it ended before its time, on one line; empty when it did not.
std::string earlyEndOf(const workbench::RecordResult& result, const std::string& file);
/// "t = 1.5", as short as it can be told apart.
std::string timeText(double time);
/// ", 12.5 times real time": of so many simulated seconds in so many that passed; empty when that says nothing.
std::string ratioText(double simulated, double seconds);

}  // namespace kshmi
