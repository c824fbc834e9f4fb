#pragma once

#include <algorithm>
#include <cstddef>
#include <functional>
#include <numeric>
#include <vector>

namespace workbench {

/// Where signals or clients stand in their set, 0-based.
using Positions = std::vector<std::size_t>;

/// Sorts the positions and drops duplicates.
template <class Order = std::less<>>
void sortUnique(Positions& positions, Order order = {}) {
    std::sort(positions.begin(), positions.end(), order);
    positions.erase(std::unique(positions.begin(), positions.end()), positions.end());
}

/// The positions from `first` on, without `end`.
inline Positions positionsBetween(std::size_t first, std::size_t end) {
    Positions positions(std::max(first, end) - first);
    std::iota(positions.begin(), positions.end(), first);
    return positions;
}

}  // namespace workbench
