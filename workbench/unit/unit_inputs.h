#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "workbench/unit/unit_value.h"

namespace workbench {

/// One input's values over the time.
struct UnitInput {
    UnitValue value;  ///< with room for what is set; of an array all elements
    bool isInterpolated = false;
    /// In a row of the table, where its elements stand; texts have their own columns.
    std::vector<std::size_t> columns;
};

/// What is fed into a unit while it runs: a CSV file whose first column is "time", ascending, and whose others are
/// called like inputs or tunable parameters, those of arrays like "u[1]", "u[2]" or "m[1,2]". Between two rows
/// continuous reals are interpolated, all else keeps the value of the row before; outside, the first and the last row
/// hold. An empty cell repeats the one above. The whole table is held in memory.
class UnitInputs {
public:
    UnitInputs() = default;
    /// Throws `Error`, with the line, for what does not fit.
    UnitInputs(const std::string& path, const FmiDescription& description, const std::vector<GivenSize>& sizes);

    bool empty() const noexcept { return m_inputs.empty(); }
    /// Hands the inputs, with their values at that time, to `take`, those that have changed since the last call only.
    /// Times must not descend.
    template <class Take>
    void at(double time, Take take) {
        if (m_inputs.empty()) return;
        seek(time);
        for (UnitInput& input : m_inputs)
            if (fill(input, time)) take(static_cast<const UnitInput&>(input));
    }

private:
    class Table;
    void seek(double time) noexcept;
    bool fill(UnitInput& input, double time);

    std::vector<double> m_times;
    std::vector<UnitInput> m_inputs;
    std::vector<std::vector<std::uint64_t>> m_slots;  ///< by column, then row
    std::vector<std::vector<std::string>> m_texts;
    std::size_t m_row = 0;
    bool m_isFirst = true;
};

}  // namespace workbench
