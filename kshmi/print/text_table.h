#pragma once

#include <cstddef>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace kshmi {

/// Rows of texts in aligned columns. What is long is wrapped where lines have an end, and shortened in the middle where
/// that is not enough, so that no cell makes the others' rows long.
class TextTable {
public:
    enum class Align : unsigned char { left, right };
    struct Column {
        std::string title;
        Align align = Align::left;
    };

    explicit TextTable(std::vector<Column> columns) : m_columns(std::move(columns)) {}
    /// As many cells as there are columns, printable.
    void add(std::vector<std::string> cells);
    /// Prints the titles and all rows, with no blanks at the ends of lines; a column without any text is left out.
    /// Lines are of `lineWidth` columns at most, as far as the columns' titles let them; 0 for no end.
    void print(std::ostream& out, std::size_t lineWidth = 0) const;

private:
    std::vector<std::size_t> naturalWidths() const;
    std::vector<std::size_t> widths(std::size_t lineWidth) const;
    void narrow(std::vector<std::size_t>& widths, std::size_t lineWidth) const;
    void printRow(std::ostream& out, const std::vector<std::string>& cells,
                  const std::vector<std::size_t>& widths) const;

    std::vector<Column> m_columns;
    std::vector<std::vector<std::string>> m_rows;
};

}  // namespace kshmi
