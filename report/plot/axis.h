#pragma once

#include <string>
#include <vector>

/// What stands along a plot: round numbers, as many as there is room for.
namespace report {

/// The number in few digits: "12.5", "-3e-07", "1.2e9", "NaN", "∞".
std::string numberText(double number);

/// Where a number lies between two others: 0 at `from` and below, 1 at `to` and above.
double shareOf(double number, double from, double to) noexcept;

struct Tick {
    double at = 0.0;  ///< share of the axis
    std::string text;
};

/// An axis whose first tick is at its beginning and whose last one is at its end, all equally far apart.
struct ValueAxis {
    double from = 0.0;
    double to = 0.0;
    std::vector<std::string> labels;  ///< two to seven, ascending
};
/// For finite numbers from `least` to `greatest`, which may be the same. Whole ticks only for whole numbers.
ValueAxis valueAxis(double least, double greatest, bool isWhole);

/// An axis of simulated time with its ticks somewhere on it. The last one tells the unit.
struct TimeAxis {
    double from = 0.0;  ///< seconds
    double to = 0.0;
    std::vector<Tick> ticks;
};
/// For finite seconds; around a single instant there is some time.
TimeAxis timeAxis(double from, double to);
/// So many seconds, in the unit that an axis of that length has: "60 s", "2.5 h".
std::string durationText(double seconds);

}  // namespace report
