#include "kshmi/print/text_table.h"

#include <algorithm>

#include "workbench/text/columns.h"

namespace kshmi {

using namespace workbench;

namespace {

constexpr std::size_t kColumnGap = 2;
constexpr std::size_t kWidestCell = 120;
// A wrapped column is no narrower, if its texts are not.
constexpr std::size_t kNarrowestCell = 8;
constexpr std::size_t kMostCellLines = 4;

std::size_t lineWidthOf(const std::vector<std::size_t>& widths) {
    std::size_t width = 0;
    for (const std::size_t column : widths) width += column > 0 ? column + kColumnGap : 0;
    return width - std::min(width, kColumnGap);
}

}  // namespace

void TextTable::add(std::vector<std::string> cells) {
    for (std::string& cell : cells) cell = shortened(cell, kWidestCell);
    m_rows.push_back(std::move(cells));
}

void TextTable::print(std::ostream& out, std::size_t lineWidth) const {
    const std::vector<std::size_t> widthOf = widths(lineWidth);
    std::vector<std::string> titles;
    for (const Column& column : m_columns) titles.push_back(column.title);
    printRow(out, titles, widthOf);
    for (const std::vector<std::string>& row : m_rows) printRow(out, row, widthOf);
}

// 0 for a column without any text.
std::vector<std::size_t> TextTable::naturalWidths() const {
    std::vector<std::size_t> result(m_columns.size(), 0);
    for (const std::vector<std::string>& row : m_rows)
        for (std::size_t i = 0; i < row.size(); ++i) result[i] = std::max(result[i], columnsOf(row[i]));
    for (std::size_t i = 0; i < result.size(); ++i)
        if (result[i] > 0) result[i] = std::max(result[i], m_columns[i].title.size());
    return result;
}

std::vector<std::size_t> TextTable::widths(std::size_t lineWidth) const {
    std::vector<std::size_t> result = naturalWidths();
    if (lineWidth > 0) narrow(result, lineWidth);
    return result;
}

// The widest columns of texts give way first.
void TextTable::narrow(std::vector<std::size_t>& widths, std::size_t lineWidth) const {
    for (std::size_t widest = kWidestCell; widest > 0 && lineWidthOf(widths) > lineWidth; --widest)
        for (std::size_t i = 0; i < widths.size(); ++i) {
            const std::size_t least = std::max({widest, kNarrowestCell, m_columns[i].title.size()});
            if (m_columns[i].align == Align::left && lineWidthOf(widths) > lineWidth)
                widths[i] = std::min(widths[i], least);
        }
}

void TextTable::printRow(std::ostream& out, const std::vector<std::string>& cells,
                         const std::vector<std::size_t>& widths) const {
    std::vector<std::vector<std::string>> columns;
    std::size_t height = 1;
    for (std::size_t i = 0; i < cells.size(); ++i) {
        const bool isWhole = widths[i] == 0 || columnsOf(cells[i]) <= widths[i];
        columns.push_back(isWhole ? std::vector{cells[i]} : wrapped(cells[i], widths[i], kMostCellLines));
        height = std::max(height, columns.back().size());
    }
    for (std::size_t row = 0; row < height; ++row) {
        std::string line;
        for (std::size_t i = 0; i < columns.size(); ++i) {
            if (widths[i] == 0) continue;
            const std::string cell = row < columns[i].size() ? columns[i][row] : "";
            const std::string padding(widths[i] - std::min(widths[i], columnsOf(cell)), ' ');
            line += m_columns[i].align == Align::right ? padding + cell : cell + padding;
            line.append(kColumnGap, ' ');
        }
        line.erase(line.find_last_not_of(' ') + 1);
        out << line << '\n';
    }
}

}  // namespace kshmi
