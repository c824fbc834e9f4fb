#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "workbench/process/unit_task.h"

namespace workbench {

/// Takes what a unit gives while it runs. What these throw ends the run, and is thrown by `runUnit`.
class UnitListener {
public:
    UnitListener() = default;
    UnitListener(const UnitListener&) = delete;
    UnitListener& operator=(const UnitListener&) = delete;
    virtual ~UnitListener() = default;

    /// Some that follow one another; they are gone afterwards.
    virtual void samples(const std::vector<UnitSample>& samples) = 0;
    /// What the unit says of itself, as far as it is asked to.
    virtual void message(double time, UnitLogLevel level, std::string_view category, std::string_view text) = 0;
    /// Several times a second, how far the unit is.
    virtual void progress(double time) = 0;
};

struct UnitControl {
    bool logs = false;     ///< whether all messages are wanted; else only errors come
    double timeout = 0.0;  ///< seconds that the unit may take for one step; 0 for no limit
    /// How often somebody has asked to stop: once, and the run ends with the step; twice, and it ends at once.
    std::function<int()> stopRequests = {};
};

/// Runs a unit in a process of its own, which ends with the run, and with this process. The unit has neither standard
/// input nor standard output: what it prints goes to standard error. Throws `Error` when there can be no process.
UnitEnd runUnit(const UnitTask& task, const UnitControl& control, UnitListener& listener);

}  // namespace workbench
