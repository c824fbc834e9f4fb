#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "workbench/text/error.h"

/// Comma-separated values as RFC 4180 has them.
namespace workbench {

struct CsvCell {
    std::string text;
    bool isQuoted = false;  ///< an empty cell in quotes is an empty text, one without is no value
};

/// Takes the next piece of a file into `buffer`, behind what is there; false at the end.
using TextSource = std::function<bool(std::string& buffer)>;
/// A file's text in pieces, until it ends. Throws `Error` when it cannot be opened or read.
TextSource piecesOfFile(const std::string& path);
/// The text, which must outlive the source.
TextSource pieceOf(std::string_view text);

/// Whether rows that start with '#' are left out.
enum class CsvComments { none, hash };

/// Cuts a text into rows, which may end in "\r\n" or "\n". Holds one row and one piece at a time.
class CsvRows {
public:
    /// `file` stands in messages.
    CsvRows(std::string file, TextSource source, CsvComments comments = CsvComments::none)
        : m_file(std::move(file)), m_source(std::move(source)), m_comments(comments) {}

    /// The next row that is not empty, in `row`; false when there is none. Throws `Error`, with the line, for quotes
    /// that do not fit.
    bool next(std::vector<CsvCell>& row);
    /// Where the row that was read last begins, 1-based.
    std::size_t line() const noexcept { return m_rowLine; }
    [[noreturn]] void fail(const std::string& text) const;

private:
    int peek();
    int take();
    void skipByteOrderMark();
    bool skipComment();
    void readCell(CsvCell& cell);
    void readQuoted(CsvCell& cell);
    bool readRow(std::vector<CsvCell>& row);

    std::string m_file;
    TextSource m_source;
    CsvComments m_comments;
    std::string m_buffer;
    std::size_t m_at = 0;
    std::size_t m_line = 1;
    std::size_t m_rowLine = 0;
};

/// The text as a cell: in quotes where it needs them, and where it would start a comment.
std::string csvCell(std::string_view text);
/// The same in quotes always, which tells a text from a number.
void appendQuotedCell(std::string& out, std::string_view text);

}  // namespace workbench
