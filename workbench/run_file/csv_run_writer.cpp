#include <fmt/compile.h>
#include <fmt/format.h>

#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>

#include "workbench/run_file/csv_output.h"
#include "workbench/run_file/run_writer.h"
#include "workbench/text/csv_row.h"
#include "workbench/text/error.h"
#include "workbench/unit/unit_texts.h"

namespace workbench {

namespace {

// What the system does for a file it does for each block.
constexpr std::size_t kRowsBuffer = std::size_t{1} << 19U;
// Longest number with its comma.
constexpr std::size_t kCellSize = 32;

char* putText(char* at, std::string_view text) {
    std::memcpy(at, text.data(), text.size());
    return at + text.size();
}

// Calls would be a tenth of a recording's time.
template <class Real>
[[gnu::always_inline]] inline char* putReal(char* at, Real value) {
    if (std::isfinite(value)) [[likely]]
        return fmt::format_to(at, FMT_COMPILE("{}"), value);
    if (std::isnan(value)) return putText(at, "NaN");
    return putText(at, value > 0 ? "Infinity" : "-Infinity");
}

// What of a column matters to each of its values, close together: most of the time goes to writing them.
struct Cell {
    explicit Cell(const RunColumn& column)
        : slot(column.slot),
          kind(column.kind),
          isDouble(column.kind == ValueKind::real && !column.isSingle),
          isUnsigned(column.isUnsigned) {}

    std::size_t slot;
    ValueKind kind;
    bool isDouble;
    bool isUnsigned;
};

char* putOther(char* at, const Cell& cell, std::uint64_t slot) {
    switch (cell.kind) {
        case ValueKind::real:
            return putReal(at, static_cast<float>(std::bit_cast<double>(slot)));
        case ValueKind::boolean:
            return putText(at, slot != 0 ? "true" : "false");
        default:
            return cell.isUnsigned ? fmt::format_to(at, FMT_COMPILE("{}"), slot)
                                   : fmt::format_to(at, FMT_COMPILE("{}"), static_cast<std::int64_t>(slot));
    }
}

inline char* putNumber(char* at, const Cell& cell, std::uint64_t slot) {
    return cell.isDouble ? putReal(at, std::bit_cast<double>(slot)) : putOther(at, cell, slot);
}

class CsvRunWriter final : public RunWriter {
public:
    CsvRunWriter(const RunTarget& target, const std::vector<RunColumn>& columns)
        : m_output(target), m_cells(columns.begin(), columns.end()) {
        m_buffer = "time";
        for (const RunColumn& column : columns) {
            m_buffer += ',' + csvCell(column.title);
            m_hasTexts = m_hasTexts || isTextual(column);
        }
        m_buffer += "\r\n";
        flush();
        if (!m_hasTexts)
            m_block = std::make_unique_for_overwrite<char[]>(kRowsBuffer + (columns.size() + 1) * kCellSize);
    }

    void write(const std::vector<RunRow>& rows) override {
        for (const RunRow& row : rows) {
            if (m_hasTexts)
                writeMixed(row);
            else
                writeNumbers(row);
            m_time = row.time;
            if (m_buffer.size() + m_used >= kRowsBuffer) flush();
        }
    }

    void flush() override {
        append(m_buffer);
        m_buffer.clear();
        append(std::string_view(m_block.get(), m_used));
        m_used = 0;
        m_keptUntil = m_time;
    }

    void finish(const UnitEnd&) override {
        flush();
        m_output.close();
    }

    std::optional<double> keptUntil() const noexcept override { return m_keptUntil; }

private:
    void append(std::string_view rows) {
        try {
            m_output.append(rows);
        } catch (const Error&) {
            double time = 0.0;
            const std::string_view row = m_output.lastKept();
            if (std::from_chars(row.data(), row.data() + row.size(), time).ec == std::errc()) m_keptUntil = time;
            throw;
        }
    }

    static bool isTextual(const RunColumn& column) noexcept {
        return column.kind == ValueKind::text || column.kind == ValueKind::binary;
    }

    void writeNumbers(const RunRow& row) {
        char* at = putReal(m_block.get() + m_used, row.time);
        const std::uint64_t* const slots = row.slots;
        const std::uint8_t* isPresent = row.isPresent;
        for (const Cell *cell = m_cells.data(), *const end = cell + m_cells.size(); cell != end; ++cell) {
            *at++ = ',';
            if (isPresent == nullptr || *isPresent++ != 0) at = putNumber(at, *cell, slots[cell->slot]);
        }
        at = putText(at, "\r\n");
        m_used = static_cast<std::size_t>(at - m_block.get());
    }

    void writeMixed(const RunRow& row) {
        std::array<char, kCellSize> number{};
        m_buffer.append(number.data(), putReal(number.data(), row.time));
        for (std::size_t i = 0; i < m_cells.size(); ++i) {
            m_buffer += ',';
            if (row.isPresent != nullptr && row.isPresent[i] == 0) continue;
            const Cell& cell = m_cells[i];
            const std::uint64_t slot = row.slots[cell.slot];
            if (cell.kind == ValueKind::text)
                appendQuotedCell(m_buffer, utf8At(row.texts, slot, m_mended));
            else if (cell.kind == ValueKind::binary)
                appendDigits(textAt(row.texts, slot));
            else
                m_buffer.append(number.data(), putNumber(number.data(), cell, slot));
        }
        m_buffer += "\r\n";
    }

    void appendDigits(std::string_view bytes) {
        m_buffer += '"';
        for (const char byte : bytes)
            fmt::format_to(std::back_inserter(m_buffer), FMT_COMPILE("{:02x}"), static_cast<unsigned char>(byte));
        m_buffer += '"';
    }

    CsvOutput m_output;
    std::vector<Cell> m_cells;
    bool m_hasTexts = false;
    std::optional<double> m_time;  // of the last row
    std::optional<double> m_keptUntil;
    std::string m_mended;
    std::string m_buffer;             // of rows with texts
    std::unique_ptr<char[]> m_block;  // of rows without
    std::size_t m_used = 0;           // of the block
};

}  // namespace

RunFormat formatOf(std::string_view path) noexcept {
    for (const std::string_view ending : {".db", ".sqlite", ".sqlite3"})
        if (path.ends_with(ending)) return RunFormat::sqlite;
    return RunFormat::csv;
}

std::unique_ptr<RunWriter> makeCsvWriter(const RunTarget& target, const std::vector<RunColumn>& columns) {
    return std::make_unique<CsvRunWriter>(target, columns);
}

}  // namespace workbench
