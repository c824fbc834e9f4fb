#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "workbench/process/unit_task.h"
#include "workbench/record/engine_ports.h"
#include "workbench/record/recorded_run.h"

namespace workbench {

/// A signal, or an element of an array, on its way into a recording. Texts are UTF-8.
struct RunColumn {
    std::string title;
    ValueKind kind = ValueKind::real;
    bool isSingle = false;    ///< a real of 32 bits, which a shorter text tells
    bool isUnsigned = false;  ///< an integer
    std::string unit;
    std::string signal;        ///< UUID
    std::size_t position = 0;  ///< of the signal, 0-based
    std::string block;         ///< full path, model name in front
    int port = 0;
    std::string portName;
    std::string element;   ///< "[2]"; empty for a scalar
    std::string variable;  ///< of the unit
    std::uint64_t decimation = 1;
    std::uint64_t maxPoints = 0;  ///< 0: all
    std::size_t slot = 0;         ///< of `UnitSample::slots`
};

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
