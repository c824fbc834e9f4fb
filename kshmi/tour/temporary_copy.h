#pragma once

#include <string>

#include "workbench/text/error.h"

namespace kshmi {

/// A copy of a file in a directory of its own, both removed at the end.
class TemporaryCopy {
public:
    /// Throws `Error` when the file cannot be copied.
    explicit TemporaryCopy(const std::string& file);
    TemporaryCopy(const TemporaryCopy&) = delete;
    TemporaryCopy& operator=(const TemporaryCopy&) = delete;
    ~TemporaryCopy();

    const std::string& path() const noexcept { return m_path; }
    /// A place in the copy as one in the file that it was made of.
    workbench::ErrorPlace aboutOriginal(workbench::ErrorPlace place) const;

private:
    std::string m_original;
    std::string m_directory;
    std::string m_path;
};

}  // namespace kshmi
