#pragma once

#include <cstddef>
#include <span>
#include <string>

#include "report/plot/axis.h"
#include "report/plot/thinning.h"

namespace report {

/// How fine the lines of a page are: in how many columns they are thinned, and in units of what they are drawn.
struct Grid {
    std::size_t columns = 600;
    std::size_t width = 600;   ///< units along the time
    std::size_t height = 200;  ///< along the values
    bool isCoarse = false;     ///< as `thinned` has it
};

/// The data of two SVG paths, in whole units from the upper left.
struct DrawnLine {
    std::string line;
    std::string dots;  ///< points without neighbours, as lines of no length
};

/// Lines are straight, or with `isStepped` each value stays until the next one.
DrawnLine drawn(std::span<const Point> points, const TimeAxis& time, const ValueAxis& values, Grid grid,
                bool isStepped);

}  // namespace report
