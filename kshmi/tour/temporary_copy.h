#pragma once

#include <string>

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
    /// A message about the copy as one about the file that it was made of.
    std::string aboutOriginal(const std::string& message) const;

private:
    std::string m_original;
    std::string m_directory;
    std::string m_path;
};

}  // namespace kshmi
