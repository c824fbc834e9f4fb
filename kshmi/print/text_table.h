#pragma once

#include <cstddef>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kshmi {

/// Columns that the text takes in a terminal: two for a wide character, one for any other.
std::size_t displayWidth(std::string_view text);

/// Rows of texts in aligned columns.
class TextTable {
public:
    enum class Align : unsigned char { left, right };
    struct Column {
        std::string title;
        Align align = Align::left;
    };

    explicit TextTable(std::vector<Column> columns) : m_columns(std::move(columns)) {}
    /// As many cells as there are columns, without control characters.
    void add(std::vector<std::string> cells) { m_rows.push_back(std::move(cells)); }
    /// Prints the titles and all rows, with no blanks at the ends of lines.
    void print(std::ostream& out) const;

private:
    std::vector<std::size_t> widths() const;
    void printRow(std::ostream& out, const std::vector<std::string>& cells,
                  const std::vector<std::size_t>& widths) const;

    std::vector<Column> m_columns;
    std::vector<std::vector<std::string>> m_rows;
};

}  // namespace kshmi
