#include <fmt/compile.h>
#include <fmt/format.h>

#include <bit>
#include <cmath>
#include <cstring>

#include "workbench/run_file/csv_output.h"
#include "workbench/run_file/run_writer.h"
#include "workbench/text/csv_row.h"
#include "workbench/unit/unit_texts.h"

namespace workbench {

namespace {

constexpr std::size_t kBufferSize = std::size_t{1} << 16U;
// Longest number with its comma.
constexpr std::size_t kCellSize = 32;

char* putText(char* at, std::string_view text) {
    std::memcpy(at, text.data(), text.size());
    return at + text.size();
}

template <class Real>
char* putReal(char* at, Real value) {
    if (std::isfinite(value)) return fmt::format_to(at, FMT_COMPILE("{}"), value);
    if (std::isnan(value)) return putText(at, "NaN");
    return putText(at, value > 0 ? "Infinity" : "-Infinity");
}

char* putNumber(char* at, const RunColumn& column, std::uint64_t slot) {
    switch (column.kind) {
        case ValueKind::real: {
            const auto value = std::bit_cast<double>(slot);
            return column.isSingle ? putReal(at, static_cast<float>(value)) : putReal(at, value);
        }
        case ValueKind::boolean:
            return putText(at, slot != 0 ? "true" : "false");
        default:
            return column.isUnsigned ? fmt::format_to(at, FMT_COMPILE("{}"), slot)
                                     : fmt::format_to(at, FMT_COMPILE("{}"), static_cast<std::int64_t>(slot));
    }
}

class CsvRunWriter final : public RunWriter {
public:
    CsvRunWriter(const RunTarget& target, const std::vector<RunColumn>& columns)
        : m_output(target), m_columns(columns) {
        m_buffer = "time";
        for (const RunColumn& column : columns) {
            m_buffer += ',' + csvCell(column.title);
            m_hasTexts = m_hasTexts || isTextual(column);
        }
        m_buffer += "\r\n";
        flush();
        if (!m_hasTexts) m_block.resize(kBufferSize + (columns.size() + 1) * kCellSize);
    }

    void write(const RunRow& row) override {
        if (m_hasTexts)
            writeMixed(row);
        else
            writeNumbers(row);
        if (m_buffer.size() + m_used >= kBufferSize) flush();
    }

    void flush() override {
        m_output.append(m_buffer);
        m_buffer.clear();
        m_output.append(std::string_view(m_block).substr(0, m_used));
        m_used = 0;
    }

    void finish(const UnitEnd&) override {
        flush();
        m_output.close();
    }

private:
    static bool isTextual(const RunColumn& column) noexcept {
        return column.kind == ValueKind::text || column.kind == ValueKind::binary;
    }

    // The block is as large as it can get: growing and shrinking it would clear every row first.
    void writeNumbers(const RunRow& row) {
        char* at = putReal(m_block.data() + m_used, row.time);
        for (std::size_t i = 0; i < m_columns.size(); ++i) {
            *at++ = ',';
            if (row.isPresent == nullptr || row.isPresent[i] != 0)
                at = putNumber(at, m_columns[i], row.slots[m_columns[i].slot]);
        }
        at = putText(at, "\r\n");
        m_used = static_cast<std::size_t>(at - m_block.data());
    }

    void writeMixed(const RunRow& row) {
        std::array<char, kCellSize> cell{};
        m_buffer.append(cell.data(), putReal(cell.data(), row.time));
        for (std::size_t i = 0; i < m_columns.size(); ++i) {
            m_buffer += ',';
            if (row.isPresent != nullptr && row.isPresent[i] == 0) continue;
            const std::uint64_t slot = row.slots[m_columns[i].slot];
            if (m_columns[i].kind == ValueKind::text)
                appendQuotedCell(m_buffer, utf8At(row.texts, slot, m_mended));
            else if (m_columns[i].kind == ValueKind::binary)
                appendDigits(textAt(row.texts, slot));
            else
                m_buffer.append(cell.data(), putNumber(cell.data(), m_columns[i], slot));
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
    const std::vector<RunColumn>& m_columns;
    bool m_hasTexts = false;
    std::string m_mended;
    std::string m_buffer;    // of rows with texts
    std::string m_block;     // of rows without
    std::size_t m_used = 0;  // of the block
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
