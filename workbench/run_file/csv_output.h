#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "workbench/run_file/run_writer.h"

namespace workbench {

/// A file, or a stream, that takes rows. Whatever happens, the file ends with a whole row.
class CsvOutput {
public:
    /// Throws `Error`.
    explicit CsvOutput(const RunTarget& target);
    CsvOutput(const CsvOutput&) = delete;
    CsvOutput& operator=(const CsvOutput&) = delete;
    ~CsvOutput();

    /// Whole rows. Throws `Error`.
    void append(std::string_view rows);
    /// Of the rows of an `append` that threw, the last one that is kept whole; empty for none of them.
    std::string_view lastKept() const noexcept { return m_lastKept; }
    /// Has all of it on the disk. Throws `Error`.
    void close();

private:
    void open(const RunTarget& target);
    [[noreturn]] void fail(const char* what, int error) const;
    [[noreturn]] void failWriting(std::string_view rows, std::size_t written, int error);

    std::string m_path;
    TextSink m_sink;
    int m_descriptor = -1;
    bool m_isRegular = false;
    std::size_t m_size = 0;  ///< of whole rows
    std::string_view m_lastKept;
};

}  // namespace workbench
