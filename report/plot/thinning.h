#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace report {

struct Point {
    double time = 0.0;
    double value = 0.0;  ///< NaN where the line is broken

    friend bool operator==(const Point&, const Point&) = default;
};

/// What of the samples is drawn in `columns` columns of equal width from `from` to `to`: of each column the first, the
/// least, the greatest and the last sample, in their order, so that the line looks as if all were there; with
/// `isCoarse` the least and the greatest, and the line's first and last sample. Samples without a finite value break
/// the line; a break shorter than a column is not seen. At most six points a column. Samples whose time is not finite,
/// or goes back, are passed over.
std::vector<Point> thinned(std::span<const double> times, std::span<const double> values, double from, double to,
                           std::size_t columns, bool isCoarse = false);

}  // namespace report
