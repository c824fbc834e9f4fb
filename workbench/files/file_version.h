#pragma once

#include <sys/stat.h>

namespace workbench {

/// What tells whether a file is still the one that was read. A change within the clock tick of the file system that
/// keeps the size goes unnoticed.
struct FileVersion {
    dev_t device = 0;
    ino_t number = 0;
    off_t size = 0;
    time_t seconds = 0;  ///< of the last change of its contents
    long nanoseconds = 0;

    static FileVersion of(const struct stat& status) noexcept {
        return {status.st_dev, status.st_ino, status.st_size, status.st_mtim.tv_sec, status.st_mtim.tv_nsec};
    }
    friend bool operator==(const FileVersion&, const FileVersion&) = default;
};

}  // namespace workbench
