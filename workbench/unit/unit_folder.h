#pragma once

#include <string>

namespace workbench {

/// A new folder for a unit's files, below the one for temporary files (TMPDIR, else /tmp), which goes with this object.
/// What a program that was killed has left behind goes when the next one is made.
class UnitFolder {
public:
    /// Throws `Error` when it cannot be made.
    UnitFolder();
    UnitFolder(const UnitFolder&) = delete;
    UnitFolder& operator=(const UnitFolder&) = delete;
    ~UnitFolder();

    /// Absolute, without a '/' at the end.
    const std::string& path() const noexcept { return m_path; }

private:
    std::string m_path;
    int m_lock = -1;
};

}  // namespace workbench
