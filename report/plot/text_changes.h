#pragma once

#include "report/html.h"
#include "workbench/record/recorded_run.h"

namespace report {

/// When a recorded text became what, the first changes of many.
void writeTextChanges(Html& html, const workbench::RecordedColumn& column, std::string_view what);

}  // namespace report
