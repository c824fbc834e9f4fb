#pragma once

#include <cstddef>
#include <vector>

#include "workbench/record/recorded_run.h"

namespace report {

/// What there is to say of a column's numbers.
struct ColumnFigures {
    std::size_t finite = 0;
    std::size_t gaps = 0;          ///< samples that are no number
    std::vector<double> up, down;  ///< times of the infinite ones
    double least = 0.0;            ///< of the finite ones, as the two below
    double greatest = 0.0;
    double last = 0.0;
};
ColumnFigures figuresOf(const workbench::RecordedColumn& column);

}  // namespace report
