#include <fmt/format.h>

#include <charconv>
#include <cstddef>
#include <utility>

#include "workbench/record/run_readers.h"
#include "workbench/text/csv_row.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

// Reads numbers as the recorder writes them, and as other programs do.
std::optional<double> numberIn(std::string_view text) {
    if (text == "true") return 1.0;
    if (text == "false") return 0.0;
    double value = 0.0;
    const char* const end = text.data() + text.size();
    const auto [stop, code] = std::from_chars(text.data(), end, value);
    if (stop != end || text.empty()) return std::nullopt;
    if (code == std::errc()) return value;
    return std::nullopt;
}

class CsvRunReader {
public:
    CsvRunReader(const std::string& file, TextSource source) : m_rows(file, std::move(source)) { m_run.file = file; }

    RecordedRun read() {
        readTitles();
        std::vector<CsvCell> row;
        while (m_rows.next(row)) readRow(row);
        return std::move(m_run);
    }

private:
    void readTitles() {
        std::vector<CsvCell> row;
        if (!m_rows.next(row) || row.front().text != "time")
            m_rows.fail("is not a recorded run: its first column is not \"time\"");
        for (std::size_t i = 1; i < row.size(); ++i) m_run.columns.emplace_back().title = std::move(row[i].text);
    }

    void readRow(const std::vector<CsvCell>& row) {
        if (row.size() != m_run.columns.size() + 1)
            m_rows.fail(fmt::format("has {}, but there are {} titles; correct the row, or delete it",
                                    counted(row.size(), "cell"), m_run.columns.size() + 1));
        const std::optional<double> time = numberIn(row.front().text);
        if (!time) m_rows.fail(fmt::format("the time {} is not a number", inQuotes(row.front().text)));
        if (!m_run.start) m_run.start = time;
        m_run.stop = time;
        for (std::size_t i = 1; i < row.size(); ++i) readCell(row[i], *time, m_run.columns[i - 1]);
    }

    // What a column holds is told by its first value.
    void readCell(const CsvCell& cell, double time, RecordedColumn& column) const {
        if (cell.text.empty() && !cell.isQuoted) return;
        if (column.times.empty())
            column.kind = cell.isQuoted                                 ? ValueKind::text
                          : cell.text == "true" || cell.text == "false" ? ValueKind::boolean
                                                                        : ValueKind::real;
        column.times.push_back(time);
        if (column.kind == ValueKind::text) {
            column.texts.push_back(cell.text);
            return;
        }
        const std::optional<double> value = numberIn(cell.text);
        if (!value || cell.isQuoted)
            m_rows.fail(fmt::format("{} is not a number, but others in column {} are", inQuotes(cell.text),
                                    inQuotes(column.title)));
        column.values.push_back(*value);
    }

    RecordedRun m_run;
    CsvRows m_rows;
};

}  // namespace

RecordedRun readCsvRun(const std::string& file, TextSource source) {
    return CsvRunReader(file, std::move(source)).read();
}

}  // namespace workbench
