#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "workbench/unit/unit.h"
#include "workbench/unit/unit_inputs.h"

namespace workbench {

/// Variables that are read at every n-th sample, and where their values go in it.
struct UnitReadingPlan {
    UnitReading reading;
    std::size_t firstSlot = 0;
    std::uint64_t decimation = 1;
};

/// All that a unit is to do, from making an instance to the end.
struct UnitTask {
    UnitStart start;
    UnitExperiment experiment;
    double until = 0.0;
    double step = 0.0;
    bool takesAnyStep = false;
    bool keepsState = false;
    std::vector<UnitValue> sizes;   ///< structural parameters
    std::vector<UnitValue> values;  ///< start values
    UnitInputs inputs;
    std::vector<UnitReadingPlan> readings;
    std::size_t slotCount = 0;
};

/// How many steps lead from one time to another; the last one may be shorter.
std::uint64_t stepCount(double from, double to, double step) noexcept;
/// Whether that last one is.
bool hasShortStep(double from, double to, double step) noexcept;

/// What the unit's variables were at one time. Slots as `Unit::read` writes them; those of readings that are not due
/// hold nothing.
struct UnitSample {
    double time = 0.0;
    std::uint64_t number = 0;  ///< 0-based
    const std::uint64_t* slots = nullptr;
    std::string_view texts;
};

enum class UnitEndKind : std::uint8_t {
    done,         ///< it came to the end
    ended,        ///< the unit itself did not want to go on
    interrupted,  ///< somebody asked to stop
    failed,       ///< the unit reported an error, or did what the standard does not allow
    crashed,      ///< it brought its process down
    hung,         ///< it did not come back
};
/// "done", "ended", "interrupted", ...
const char* nameOf(UnitEndKind kind) noexcept;

struct UnitEnd {
    UnitEndKind kind = UnitEndKind::done;
    double time = 0.0;
    std::string message = {};  ///< why, but for `done`
};

}  // namespace workbench
