#include "workbench/unit/unit_folder.h"

#include <fmt/format.h>

#include <fcntl.h>
#include <stdlib.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <string_view>

#include "workbench/text/error.h"

namespace workbench {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kPrefix = "kshmi-unit-";
// A folder this young may not be locked yet.
constexpr std::time_t kYouth = 60;

// Files below may have been made unwritable.
void removeFolder(const std::string& path) noexcept {
    std::error_code code;
    fs::remove_all(path, code);
    if (!code) return;
    const fs::recursive_directory_iterator end;
    for (fs::recursive_directory_iterator at(path, code); !code && at != end; at.increment(code))
        if (std::error_code ignored; at->is_directory(ignored) && !at->is_symlink(ignored))
            fs::permissions(at->path(), fs::perms::owner_all, ignored);
    fs::remove_all(path, code);
}

int locked(const std::string& path) noexcept {
    const int folder = ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NOFOLLOW);
    if (folder < 0 || ::flock(folder, LOCK_EX | LOCK_NB) == 0) return folder;
    ::close(folder);
    return -1;
}

void removeLeftBehind(const std::string& path) noexcept {
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0 || !S_ISDIR(status.st_mode) || status.st_uid != ::geteuid()) return;
    if (std::time(nullptr) - status.st_mtime < kYouth) return;
    const int lock = locked(path);
    if (lock < 0) return;
    removeFolder(path);
    ::close(lock);
}

void removeAllLeftBehind(const fs::path& folder) noexcept {
    std::error_code code;
    const fs::directory_iterator end;
    for (fs::directory_iterator at(folder, code); !code && at != end; at.increment(code))
        if (at->path().filename().string().starts_with(kPrefix)) removeLeftBehind(at->path().string());
}

fs::path temporaryFolder() {
    std::error_code code;
    const fs::path folder = fs::temp_directory_path(code);
    if (!code) return fs::absolute(folder, code);
    const char* const wanted = std::getenv("TMPDIR");
    throw Error({wanted != nullptr ? wanted : "/tmp"},
                "is not a folder, and the unit is to be unpacked there; set TMPDIR to one", ErrorCode::file);
}

}  // namespace

UnitFolder::UnitFolder() {
    const fs::path folder = temporaryFolder();
    removeAllLeftBehind(folder);
    std::string path = (folder / (std::string(kPrefix) + "XXXXXX")).string();
    if (::mkdtemp(path.data()) == nullptr)
        throw Error(
            {folder.string()},
            fmt::format("the unit cannot be unpacked here: {}; set TMPDIR to another folder", std::strerror(errno)),
            ErrorCode::file);
    m_path = std::move(path);
    m_lock = locked(m_path);
}

UnitFolder::~UnitFolder() {
    removeFolder(m_path);
    if (m_lock >= 0) ::close(m_lock);
}

}  // namespace workbench
