#include "kshmi/print/text_table.h"

#include <fmt/format.h>

#include <algorithm>

namespace kshmi {

namespace {

constexpr std::size_t kGap = 2;

}  // namespace

std::size_t displayWidth(std::string_view text) {
    // Padded to as many columns as the text has bytes, which is no fewer than it takes, it grows by the difference.
    return 2 * text.size() - fmt::formatted_size("{:{}}", text, text.size());
}

void TextTable::print(std::ostream& out) const {
    const std::vector<std::size_t> widthOf = widths();
    std::vector<std::string> titles;
    for (const Column& column : m_columns) titles.push_back(column.title);
    printRow(out, titles, widthOf);
    for (const std::vector<std::string>& row : m_rows) printRow(out, row, widthOf);
}

std::vector<std::size_t> TextTable::widths() const {
    std::vector<std::size_t> result;
    for (const Column& column : m_columns) result.push_back(displayWidth(column.title));
    for (const std::vector<std::string>& row : m_rows)
        for (std::size_t i = 0; i < row.size(); ++i) result[i] = std::max(result[i], displayWidth(row[i]));
    return result;
}

void TextTable::printRow(std::ostream& out, const std::vector<std::string>& cells,
                         const std::vector<std::size_t>& widths) const {
    std::string line;
    for (std::size_t i = 0; i < cells.size(); ++i) {
        const bool isRight = m_columns[i].align == Align::right;
        line += isRight ? fmt::format("{:>{}}", cells[i], widths[i]) : fmt::format("{:<{}}", cells[i], widths[i]);
        line.append(kGap, ' ');
    }
    line.erase(line.find_last_not_of(' ') + 1);
    out << line << '\n';
}

}  // namespace kshmi
