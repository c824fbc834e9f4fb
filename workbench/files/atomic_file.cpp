#include "workbench/files/atomic_file.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <stdlib.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "workbench/text/error.h"

namespace workbench {

namespace {

constexpr std::size_t kBufferSize = std::size_t{1} << 16U;
constexpr mode_t kPermissionBits = 07777;
constexpr mode_t kNewFile = 0644;
constexpr const char* kIsThere = "a file with this name exists already; choose another name, or replace that file";
constexpr const char* kAccessList = "system.posix_acl_access";

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

AtomicFile::AtomicFile(const std::string& path, std::optional<FileVersion> replaced)
    : m_path(path), m_replaced(replaced) {
    prepare();
}

AtomicFile::AtomicFile(New, const std::string& path) : m_path(path), m_isNew(true) { prepare(); }

void AtomicFile::prepare() {
    std::error_code code;
    const auto real = std::filesystem::weakly_canonical(m_path, code);
    m_target = code ? m_path : real.string();
    struct stat old {};
    const bool isThere = ::stat(m_path.c_str(), &old) == 0;
    if (!isThere && errno != ENOENT) fail("its status cannot be read");
    if (isThere && m_isNew) refuse(kIsThere);
    if (isThere && !S_ISREG(old.st_mode)) refuse("it is not a regular file; name one");
    if (isThere && ::faccessat(AT_FDCWD, m_target.c_str(), W_OK, AT_EACCESS) != 0) fail("it cannot be written to");
    try {
        if (isThere) lock();
        makeTemporary();
        if (isThere)
            takeOverFrom(old);
        else if (::fchmod(m_descriptor, kNewFile) != 0)
            fail("permissions cannot be set");
    } catch (...) {
        discard();
        throw;
    }
}

AtomicFile::~AtomicFile() { discard(); }

void AtomicFile::discard() noexcept {
    if (m_descriptor >= 0) ::close(m_descriptor);
    if (!m_temporary.empty()) ::unlink(m_temporary.c_str());
    if (m_lock >= 0) ::close(m_lock);
}

// The lock is on the file that will be replaced, and goes with it: who waited for it finds another version.
void AtomicFile::lock() {
    m_lock = ::open(m_target.c_str(), O_RDONLY | O_CLOEXEC);
    if (m_lock < 0) return;
    // Some file systems have no locks; the version is looked at in any case.
    if (::flock(m_lock, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK)
        refuse("somebody else is saving it; try again when that is done", ErrorCode::inUse);
}

void AtomicFile::makeTemporary() {
    m_temporary = directoryOf(m_target) + "/.kshmi-XXXXXX";
    m_descriptor = ::mkostemp(m_temporary.data(), O_CLOEXEC);
    if (m_descriptor >= 0) return;
    m_temporary.clear();
    fail("no file can be made beside it");
}

void AtomicFile::takeOverFrom(const struct stat& old) {
    takeOverOwner(old);
    // A folder may have given the new file a list that the old one does not have.
    if (::fremovexattr(m_descriptor, kAccessList) != 0 && errno != ENODATA && errno != ENOTSUP)
        fail("the folder's access control list cannot be taken off the new file");
    if (::fchmod(m_descriptor, old.st_mode & kPermissionBits) != 0) fail("its permissions cannot be kept");
    takeOverAttributes();
    if (old.st_nlink > 1)
        m_warnings.push_back(
            fmt::format("the file has {} names (hard links); the others keep the old contents", old.st_nlink));
}

void AtomicFile::takeOverOwner(const struct stat& old) {
    struct stat made {};
    if (::fstat(m_descriptor, &made) != 0) fail("the status of the new file cannot be read");
    if (made.st_uid == old.st_uid && made.st_gid == old.st_gid) return;
    if (::fchown(m_descriptor, old.st_uid, old.st_gid) == 0) return;
    constexpr uid_t kAsItIs = static_cast<uid_t>(-1);
    if (made.st_gid != old.st_gid && ::fchown(m_descriptor, kAsItIs, old.st_gid) != 0)
        refuse("its group cannot be kept; copy the file and work on the copy");
    m_warnings.push_back(
        fmt::format("the file belonged to user {} and now belongs to user {}, who saved it", old.st_uid, made.st_uid));
}

void AtomicFile::takeOverAttributes() const {
    const ssize_t size = ::listxattr(m_target.c_str(), nullptr, 0);
    if (size < 0 && errno != ENOTSUP) fail("its extended attributes cannot be listed");
    if (size <= 0) return;
    std::vector<char> names(static_cast<std::size_t>(size));
    const ssize_t used = ::listxattr(m_target.c_str(), names.data(), names.size());
    if (used < 0) fail("its extended attributes cannot be listed");
    for (const char* name = names.data(); name < names.data() + used; name += std::strlen(name) + 1) takeOver(name);
}

void AtomicFile::takeOver(const char* attribute) const {
    const std::string_view name = attribute;
    // The system sets its own labels (security., trusted.) on each file.
    if (!name.starts_with("user.") && !name.starts_with("system.")) return;
    const ssize_t size = ::getxattr(m_target.c_str(), attribute, nullptr, 0);
    std::vector<char> value(size > 0 ? static_cast<std::size_t>(size) : 0);
    const ssize_t used = size < 0 ? size : ::getxattr(m_target.c_str(), attribute, value.data(), value.size());
    if (used >= 0 && ::fsetxattr(m_descriptor, attribute, value.data(), static_cast<std::size_t>(used), 0) == 0) return;
    const std::string what = name == kAccessList ? "access control list" : fmt::format("extended attribute {}", name);
    fail(fmt::format("its {} cannot be kept", what).c_str());
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

void AtomicFile::requireReplaceable() const {
    if (!m_replaced) return;
    struct stat now {};
    if (::stat(m_target.c_str(), &now) != 0) fail("its status can no longer be read");
    if (FileVersion::of(now) != *m_replaced)
        refuse("it has been changed since it was read; look at the change and try again", ErrorCode::inUse);
}

FileVersion AtomicFile::commit() {
    flush();
    struct stat written {};
    if (::fsync(m_descriptor) != 0 || ::fstat(m_descriptor, &written) != 0) fail("writing failed");
    const int descriptor = m_descriptor;
    m_descriptor = -1;
    if (::close(descriptor) != 0) fail("writing failed");
    requireReplaceable();
    takePlace();
    m_temporary.clear();
    syncDirectory();
    return FileVersion::of(written);
}

void AtomicFile::takePlace() {
    // A link does not take another file's place, as a renamed file does.
    if (m_isNew && ::link(m_temporary.c_str(), m_target.c_str()) == 0) {
        ::unlink(m_temporary.c_str());
        return;
    }
    if (m_isNew && errno == EEXIST) refuse(kIsThere);
    if (std::rename(m_temporary.c_str(), m_target.c_str()) != 0) fail("it cannot be replaced");
}

void AtomicFile::syncDirectory() const {
    const int directory = ::open(directoryOf(m_target).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (directory < 0) return;
    ::fsync(directory);
    ::close(directory);
}

void AtomicFile::fail(const char* what) const {
    const int reason = errno;
    refuse(fmt::format("{}: {}; check permissions and free space and try again", what, std::strerror(reason)));
}

void AtomicFile::refuse(const std::string& why, ErrorCode code) const {
    throw Error({m_path, 0, {}}, fmt::format("not saved, the file is as it was: {}", why), code);
}

}  // namespace workbench
