#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "workbench/unit/unit_library.h"
#include "workbench/unit/unit_value.h"

namespace workbench {

/// What a unit is made with.
struct UnitStart {
    int major = 2;          ///< 2 or 3
    std::string library;    ///< path of the binary
    std::string resources;  ///< folder, absolute
    std::string name;       ///< of the instance
    std::string token;
    bool logs = false;        ///< whether it is to tell all that it does
    bool usesEvents = false;  ///< 3.0
};

struct UnitExperiment {
    double start = 0.0;
    std::optional<double> stop = std::nullopt;
    std::optional<double> tolerance = std::nullopt;
};

/// How far a step came.
struct UnitStep {
    double time = 0.0;
    bool wasGivenUp = false;  ///< the state is not that of `time`; only an older one can be given back
    bool needsEvent = false;  ///< `handleEvents` is due
    bool hasEnded = false;    ///< the unit does not want to go on
};

/// Variables of one type that are read together.
struct UnitReading {
    UnitType type = UnitType::float64;
    std::vector<std::uint32_t> references;
    std::size_t count = 0;  ///< of values: arrays have several
};

/// An instance of a unit, driven by the standard's calls in the standard's order. Whatever the unit reports
/// as an error is thrown as `UnitFailure` that names the function. Freed with this object, unless it said that it
/// cannot even be freed.
class Unit {
public:
    Unit() = default;
    Unit(const Unit&) = delete;
    Unit& operator=(const Unit&) = delete;
    virtual ~Unit() = default;

    /// Sizes of arrays, before anything else.
    virtual void configure(const std::vector<UnitValue>& sizes) = 0;
    /// Variables of one type each.
    virtual void set(const UnitValue& value) = 0;
    virtual void enterInitialization(const UnitExperiment& experiment) = 0;
    virtual void exitInitialization() = 0;
    /// Before what may only change in an event is set; `handleEvents` comes next. Of units with events only.
    virtual void beginEvent() = 0;
    /// Handles what `UnitStep::needsEvent` asks for. Sets `hasEnded` when the unit does not want to go on. Returns the
    /// time of the next event, when the unit knows it.
    virtual std::optional<double> handleEvents(bool& hasEnded) = 0;
    /// Remembers the state, for `restoreState`, which may come up to the next step's end.
    virtual void keepState() = 0;
    virtual void restoreState() = 0;
    /// `isFinal`: no state from before this step will be given back.
    virtual UnitStep step(double time, double size, bool isFinal) = 0;
    /// Writes numbers, 64 bits each, as `UnitValue` has them; of texts and binary values the position in `texts`
    /// in the upper 32 bits and the size in the lower ones, and appends them there.
    virtual void read(const UnitReading& reading, std::uint64_t* slots, std::string& texts) = 0;
    virtual void terminate() = 0;
};

/// Loads a unit and makes an instance of it. Throws `UnitFailure`. The log outlives it.
std::unique_ptr<Unit> instantiateUnit(const UnitStart& start, const UnitLog& log);
std::unique_ptr<Unit> instantiateFmi2Unit(const UnitStart& start, const UnitLog& log);
std::unique_ptr<Unit> instantiateFmi3Unit(const UnitStart& start, const UnitLog& log);

}  // namespace workbench
