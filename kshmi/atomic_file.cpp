#include "kshmi/atomic_file.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "kshmi/error.h"

namespace kshmi {

namespace {

constexpr std::size_t kBufferSize = std::size_t{1} << 16U;
constexpr mode_t kPermissionBits = 07777;
constexpr mode_t kNewFile = 0644;

std::string directoryOf(const std::string& path) {
    const std::string parent = std::filesystem::path(path).parent_path().string();
    return parent.empty() ? "." : parent;
}

}  // namespace

AtomicFile::AtomicFile(const std::string& path) : m_path(path) {
    std::error_code code;
    const auto real = std::filesystem::weakly_canonical(path, code);
    m_target = code ? path : real.string();
    m_temporary = directoryOf(m_target) + "/.kshmi-XXXXXX";
    m_descriptor = ::mkostemp(m_temporary.data(), O_CLOEXEC);
    if (m_descriptor < 0) {
        m_temporary.clear();
        fail("no file can be made beside it");
    }
    takeOverFrom(m_target);
}

AtomicFile::~AtomicFile() {
    if (m_descriptor >= 0) ::close(m_descriptor);
    if (!m_temporary.empty()) ::unlink(m_temporary.c_str());
}

void AtomicFile::takeOverFrom(const std::string& target) const {
    struct stat old {};
    const bool isThere = ::stat(target.c_str(), &old) == 0;
    // Only the superuser may give files away; everybody else keeps their own.
    [[maybe_unused]] const int owned = isThere ? ::fchown(m_descriptor, old.st_uid, old.st_gid) : 0;
    ::fchmod(m_descriptor, isThere ? old.st_mode & kPermissionBits : kNewFile);
}

void AtomicFile::write(std::string_view text) {
    m_buffer += text;
    if (m_buffer.size() >= kBufferSize) flush();
}

void AtomicFile::flush() {
    std::string_view rest = m_buffer;
    while (!rest.empty()) {
        const ssize_t written = ::write(m_descriptor, rest.data(), rest.size());
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) fail("writing failed");
        rest.remove_prefix(static_cast<std::size_t>(written));
    }
    m_buffer.clear();
}

void AtomicFile::commit() {
    flush();
    if (::fsync(m_descriptor) != 0) fail("writing failed");
    const int descriptor = m_descriptor;
    m_descriptor = -1;
    if (::close(descriptor) != 0) fail("writing failed");
    if (std::rename(m_temporary.c_str(), m_target.c_str()) != 0) fail("it cannot be replaced");
    m_temporary.clear();
    syncDirectory();
}

void AtomicFile::syncDirectory() const {
    const int directory = ::open(directoryOf(m_target).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (directory < 0) return;
    ::fsync(directory);
    ::close(directory);
}

void AtomicFile::fail(const char* what) const {
    const int reason = errno;
    throw Error(m_path + ": not saved, the file is as it was: " + what + ": " + std::strerror(reason) +
                "; check permissions and free space and try again");
}

}  // namespace kshmi
