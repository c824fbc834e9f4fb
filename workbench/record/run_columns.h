#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "workbench/process/unit_task.h"
#include "workbench/record/engine_ports.h"
#include "workbench/run_file/run_column.h"

namespace workbench {

/// What is recorded of a unit, and how it is read.
struct RunPlan {
    std::vector<RunColumn> columns;  ///< in the signals' order
    std::vector<UnitReadingPlan> readings;
    std::size_t slotCount = 0;
    std::vector<std::string> warnings;  ///< signals that are not recorded, and why
};

/// Plans for the observed ports of a model: what no signal observes is never read. Signals of charts, signals that are
/// excluded, and those whose variable the unit does not have are left out, with a warning.
RunPlan planRun(Session& session, EnginePorts& ports, const FmiDescription& description,
                const std::vector<GivenSize>& sizes);

}  // namespace workbench
