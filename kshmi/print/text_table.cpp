#include "kshmi/print/text_table.h"

#include <algorithm>

namespace kshmi {

namespace {

constexpr std::size_t kGap = 2;

bool isContinuation(char c) noexcept { return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U; }

}  // namespace

std::size_t displayWidth(std::string_view text) noexcept {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) { return !isContinuation(c); }));
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
        const std::string padding(widths[i] - displayWidth(cells[i]), ' ');
        line += m_columns[i].align == Align::right ? padding + cells[i] : cells[i] + padding;
        line.append(kGap, ' ');
    }
    line.erase(line.find_last_not_of(' ') + 1);
    out << line << '\n';
}

}  // namespace kshmi
