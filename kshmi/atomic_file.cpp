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

AtomicFile::Uninterrupted::Uninterrupted() noexcept {
    sigset_t held;
    ::sigemptyset(&held);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) ::sigaddset(&held, signal);
    ::pthread_sigmask(SIG_BLOCK, &held, &m_mask);
    struct sigaction ignore {};
    ignore.sa_handler = SIG_IGN;
    ::sigaction(SIGXFSZ, &ignore, &m_sizeLimit);
}

AtomicFile::Uninterrupted::~Uninterrupted() {
    ::sigaction(SIGXFSZ, &m_sizeLimit, nullptr);
    ::pthread_sigmask(SIG_SETMASK, &m_mask, nullptr);
}

AtomicFile::AtomicFile(const std::string& path) : m_path(path) {
    std::error_code code;
    const auto real = std::filesystem::weakly_canonical(path, code);
    m_target = code ? path : real.string();
    struct stat old {};
    const bool isThere = ::stat(m_path.c_str(), &old) == 0;
    if (isThere && !S_ISREG(old.st_mode)) refuse("it is no regular file; name one");
    if (isThere && ::faccessat(AT_FDCWD, m_target.c_str(), W_OK, AT_EACCESS) != 0) fail("it must not be written");
    makeTemporary();
    try {
        if (isThere)
            takeOverFrom(old);
        else
            ::fchmod(m_descriptor, kNewFile);
    } catch (...) {
        discard();
        throw;
    }
}

AtomicFile::~AtomicFile() { discard(); }

void AtomicFile::discard() noexcept {
    if (m_descriptor >= 0) ::close(m_descriptor);
    if (!m_temporary.empty()) ::unlink(m_temporary.c_str());
}

void AtomicFile::makeTemporary() {
    m_temporary = directoryOf(m_target) + "/.kshmi-XXXXXX";
    m_descriptor = ::mkostemp(m_temporary.data(), O_CLOEXEC);
    if (m_descriptor >= 0) return;
    m_temporary.clear();
    fail("no file can be made beside it");
}

void AtomicFile::takeOverFrom(const struct stat& old) const {
    struct stat made {};
    ::fstat(m_descriptor, &made);
    const bool isAnothers = made.st_uid != old.st_uid || made.st_gid != old.st_gid;
    if (isAnothers && ::fchown(m_descriptor, old.st_uid, old.st_gid) != 0)
        refuse("its owner and group cannot be kept; copy it and work on the copy");
    ::fchmod(m_descriptor, old.st_mode & kPermissionBits);
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
    refuse(std::string(what) + ": " + std::strerror(reason) + "; check permissions and free space and try again");
}

void AtomicFile::refuse(const std::string& why) const {
    throw Error(m_path + ": not saved, the file is as it was: " + why);
}

}  // namespace kshmi
