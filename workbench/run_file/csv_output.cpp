#include "workbench/run_file/csv_output.h"

#include <fmt/format.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "workbench/text/error.h"

namespace workbench {

namespace {

constexpr mode_t kMode = 0666;

// The last row that ends within the first bytes.
std::string_view lastRow(std::string_view rows, std::size_t size) {
    std::size_t begin = 0;
    std::size_t end = 0;
    bool isQuoted = false;
    for (std::size_t i = 0; i < size; ++i) {
        if (rows[i] == '"') isQuoted = !isQuoted;
        if (rows[i] == '\n' && !isQuoted) begin = std::exchange(end, i + 1);
    }
    return rows.substr(begin, end - begin);
}

}  // namespace

CsvOutput::CsvOutput(const RunTarget& target) : m_path(target.path), m_sink(target.sink) {
    if (m_path != kStandardStream) open(target);
}

CsvOutput::~CsvOutput() {
    if (m_descriptor >= 0) ::close(m_descriptor);
}

void CsvOutput::fail(const char* what, int error) const {
    throw Error({m_path}, fmt::format("{}: {}", what, std::strerror(error)), ErrorCode::file);
}

void CsvOutput::open(const RunTarget& target) {
    m_descriptor = ::open(m_path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOCTTY, kMode);
    if (m_descriptor < 0 && errno == EEXIST)
        m_descriptor = ::open(m_path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY);
    else
        m_isRegular = true;
    if (m_descriptor < 0 && errno == ENOENT)
        throw Error({m_path}, "cannot be made: its folder is not there; make it first", ErrorCode::file);
    if (m_descriptor < 0) fail("cannot be written", errno);
    if (m_isRegular) return;
    struct stat status {};
    if (::fstat(m_descriptor, &status) != 0) fail("cannot be written", errno);
    m_isRegular = S_ISREG(status.st_mode);
    if (!m_isRegular) return;
    if (!target.replaces)
        throw Error({m_path}, "exists already; give another name", ErrorCode::file, Remedy::replaceFile);
    if (::ftruncate(m_descriptor, 0) != 0) fail("cannot be replaced", errno);
}

void CsvOutput::append(std::string_view rows) {
    if (m_descriptor < 0) {
        if (m_sink && !rows.empty()) m_sink(rows);
        return;
    }
    std::size_t written = 0;
    while (written < rows.size()) {
        const ssize_t count = ::write(m_descriptor, rows.data() + written, rows.size() - written);
        if (count < 0 && errno != EINTR) failWriting(rows, written, errno);
        written += static_cast<std::size_t>(std::max<ssize_t>(count, 0));
    }
    m_size += written;
}

void CsvOutput::failWriting(std::string_view rows, std::size_t written, int error) {
    m_lastKept = lastRow(rows, written);
    m_size += static_cast<std::size_t>(m_lastKept.data() + m_lastKept.size() - rows.data());
    // A row that is cut off would be taken for one with other values.
    if (m_isRegular && ::ftruncate(m_descriptor, static_cast<off_t>(m_size)) != 0)
        fail("its last row is cut off, and cannot be taken away", errno);
    fail("cannot be written", error);
}

void CsvOutput::close() {
    if (m_descriptor < 0) return;
    if (m_isRegular && ::fsync(m_descriptor) != 0 && errno != EINVAL && errno != EROFS)
        fail("cannot be written", errno);
    const int descriptor = m_descriptor;
    m_descriptor = -1;
    if (::close(descriptor) != 0 && errno != EINTR) fail("cannot be written", errno);
}

}  // namespace workbench
