#include "report/plot/figures.h"

#include <algorithm>
#include <cmath>

namespace report {

ColumnFigures figuresOf(const workbench::RecordedColumn& column) {
    ColumnFigures figures;
    for (std::size_t i = 0; i < column.values.size(); ++i) {
        const double value = column.values[i];
        if (std::isnan(value)) {
            ++figures.gaps;
        } else if (std::isinf(value)) {
            (value > 0 ? figures.up : figures.down).push_back(column.times[i]);
        } else {
            figures.least = figures.finite == 0 ? value : std::min(figures.least, value);
            figures.greatest = figures.finite == 0 ? value : std::max(figures.greatest, value);
            figures.last = value;
            ++figures.finite;
        }
    }
    return figures;
}

}  // namespace report
