#include "workbench/unit/unit_inputs.h"

#include <fmt/format.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <unordered_map>

#include "workbench/text/csv_row.h"
#include "workbench/text/nearest.h"
#include "workbench/text/text.h"
#include "workbench/unit/array_element.h"

namespace workbench {

namespace {

// Programs and people put blanks behind commas.
std::string_view bare(const CsvCell& cell) noexcept {
    std::string_view text = cell.text;
    if (cell.isQuoted) return text;
    text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
    return text.substr(0, text.find_last_not_of(" \t") + 1);
}

}  // namespace

// Reads the file into the inputs.
class UnitInputs::Table {
public:
    Table(UnitInputs& inputs, const std::string& path, const FmiDescription& description,
          const std::vector<GivenSize>& sizes)
        : m_inputs(inputs), m_rows(path, piecesOfFile(path)), m_description(description), m_sizes(sizes) {}

    void read() {
        std::vector<CsvCell> row;
        if (!m_rows.next(row) || bare(row.front()) != "time")
            m_rows.fail(!row.empty() && row.front().text.find_first_of(";\t") != std::string::npos
                            ? "its cells are not separated by commas; have it written with commas"
                            : "the first column of inputs is \"time\"; name it so");
        for (std::size_t i = 1; i < row.size(); ++i) addColumn(std::string(bare(row[i])));
        requireWholeArrays();
        while (m_rows.next(row)) addRow(row);
        if (m_inputs.m_times.empty()) m_rows.fail("holds no row of values; give one at least");
    }

private:
    struct Column {
        const FmiVariable* variable;
        UnitType type;
    };

    void addColumn(const std::string& title) {
        const auto [name, element] = findVariable(title);
        const FmiVariable& variable = *name;
        UnitInput& input = inputOf(variable);
        if (element >= input.columns.size() || input.columns[element] != 0)
            m_rows.fail(fmt::format(
                "the title {} {}", inQuotes(title),
                element < input.columns.size() ? "is there twice; leave one out" : "names no element of the array"));
        m_columns.push_back({&variable, input.value.type});
        input.columns[element] = m_columns.size();  // 1-based until all are there
        m_inputs.m_slots.emplace_back();
        m_inputs.m_texts.emplace_back();
    }

    std::pair<const FmiVariable*, std::size_t> findVariable(const std::string& title) {
        for (const FmiVariable& variable : m_description.variables) {
            if (!title.starts_with(variable.name)) continue;
            const std::string_view rest = std::string_view(title).substr(variable.name.size());
            const bool isArray = !variable.dimensions.empty();
            if (rest.empty() != isArray && (rest.empty() || rest.front() == '[')) {
                requireSettable(variable);
                const auto extents = extentsOf(variable, m_description, m_sizes);
                return {&variable, rest.empty() ? 0 : elementAt(rest, extents)};
            }
            if (rest.empty())
                m_rows.fail(fmt::format("{} is an array; give its elements a column each: {}", inQuotes(title),
                                        inQuotes(title + "[1]")));
        }
        Nearest nearest(title);
        for (const FmiVariable& variable : m_description.variables)
            if (variable.causality == FmiCausality::input) nearest.offer(variable.name);
        m_rows.fail(fmt::format("the unit has no input {}{}", inQuotes(title), nearest.question()));
    }

    void requireSettable(const FmiVariable& variable) {
        const bool isTunable = variable.causality == FmiCausality::parameter && variable.variability == "tunable";
        if (variable.causality != FmiCausality::input && !isTunable)
            m_rows.fail(fmt::format(
                "{} is neither an input nor a tunable parameter; leave its column out{}", inQuotes(variable.name),
                variable.causality == FmiCausality::parameter ? ", and give it a start value" : ""));
        if (!variable.valueReference || !unitTypeOf(variable.type))
            m_rows.fail(inQuotes(variable.name) + " cannot be set; leave its column out");
    }

    UnitInput& inputOf(const FmiVariable& variable) {
        const auto [place, isNew] = m_places.try_emplace(&variable, m_inputs.m_inputs.size());
        if (!isNew) return m_inputs.m_inputs[place->second];
        UnitInput& input = m_inputs.m_inputs.emplace_back();
        input.value.type = *unitTypeOf(variable.type);
        input.value.reference = *variable.valueReference;
        input.isInterpolated = isFloat(input.value.type) && variable.causality == FmiCausality::input &&
                               (variable.variability.empty() || variable.variability == "continuous");
        const std::size_t count = elementCount(extentsOf(variable, m_description, m_sizes));
        input.columns.assign(count, 0);
        input.value.texts.resize(isText(input.value.type) ? count : 0);
        input.value.slots.resize(isText(input.value.type) ? 0 : count);
        return input;
    }

    void requireWholeArrays() {
        for (UnitInput& input : m_inputs.m_inputs)
            for (std::size_t& column : input.columns)
                if (column-- == 0) m_rows.fail("an array lacks columns for some of its elements; give all of them");
    }

    void addRow(const std::vector<CsvCell>& row) {
        if (row.size() != m_columns.size() + 1)
            m_rows.fail(
                fmt::format("has {}, but there are {} titles", counted(row.size(), "cell"), m_columns.size() + 1));
        try {
            const auto time = std::bit_cast<double>(slotOfText(UnitType::float64, bare(row.front()), "time"));
            if (!std::isfinite(time) || (!m_inputs.m_times.empty() && time < m_inputs.m_times.back()))
                m_rows.fail(inQuotes(row.front().text) + " is not a time after the one above; sort the rows");
            for (std::size_t i = 0; i < m_columns.size(); ++i) addCell(row[i + 1], i);
            m_inputs.m_times.push_back(time);
        } catch (const Error& error) {
            if (!error.place().file.empty()) throw;
            m_rows.fail(error.text());
        }
    }

    void addCell(const CsvCell& cell, std::size_t column) {
        const auto& [variable, type] = m_columns[column];
        const std::string_view text = isText(type) ? std::string_view(cell.text) : bare(cell);
        const bool repeats = text.empty() && !cell.isQuoted;
        if (repeats && m_inputs.m_times.empty())
            m_rows.fail(inQuotes(variable->name) + " has no first value; an empty cell repeats the one above");
        std::vector<std::uint64_t>& slots = m_inputs.m_slots[column];
        std::vector<std::string>& texts = m_inputs.m_texts[column];
        if (!isText(type)) {
            slots.push_back(repeats ? slots.back() : slotOfText(*variable, text));
        } else if (repeats) {
            texts.push_back(texts.back());
        } else {
            const auto bytes = type == UnitType::binary ? bytesOfDigits(cell.text) : cell.text;
            if (!bytes) m_rows.fail(inQuotes(variable->name) + " takes pairs of hexadecimal digits");
            texts.push_back(*bytes);
        }
    }

    UnitInputs& m_inputs;
    CsvRows m_rows;
    const FmiDescription& m_description;
    const std::vector<GivenSize>& m_sizes;
    std::vector<Column> m_columns;
    std::unordered_map<const FmiVariable*, std::size_t> m_places;
};

UnitInputs::UnitInputs(const std::string& path, const FmiDescription& description,
                       const std::vector<GivenSize>& sizes) {
    Table(*this, path, description, sizes).read();
}

void UnitInputs::seek(double time) noexcept {
    while (m_row + 1 < m_times.size() && m_times[m_row + 1] <= time) ++m_row;
}

bool UnitInputs::fill(UnitInput& input, double time) {
    bool hasChanged = m_isFirst;
    if (&input == &m_inputs.back()) m_isFirst = false;
    const bool isBetween = input.isInterpolated && time > m_times[m_row] && m_row + 1 < m_times.size();
    for (std::size_t i = 0; i < input.columns.size(); ++i) {
        const std::size_t column = input.columns[i];
        if (isText(input.value.type)) {
            const std::string& text = m_texts[column][m_row];
            hasChanged = hasChanged || input.value.texts[i] != text;
            input.value.texts[i] = text;
            continue;
        }
        std::uint64_t slot = m_slots[column][m_row];
        if (isBetween) {
            const double share = (time - m_times[m_row]) / (m_times[m_row + 1] - m_times[m_row]);
            const auto from = std::bit_cast<double>(slot);
            const auto to = std::bit_cast<double>(m_slots[column][m_row + 1]);
            slot = std::bit_cast<std::uint64_t>(from + (to - from) * share);
        }
        hasChanged = hasChanged || input.value.slots[i] != slot;
        input.value.slots[i] = slot;
    }
    return hasChanged;
}

}  // namespace workbench
