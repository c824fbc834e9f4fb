#pragma once

#include <string>
#include <string_view>

namespace kshmi {

/// Replaces a file as a whole: what is written goes to a new file beside it, which takes its place on
/// `commit`. Until then, and after any failure, the file is as it was and nothing is left beside it.
/// Where `path` is a symbolic link, the file that it leads to is replaced. The new file keeps the
/// permissions of the old one and, where the system allows, its owner.
class AtomicFile {
public:
    /// Throws `Error` when the new file cannot be made.
    explicit AtomicFile(const std::string& path);
    AtomicFile(const AtomicFile&) = delete;
    AtomicFile& operator=(const AtomicFile&) = delete;
    ~AtomicFile();

    /// Buffered. Throws `Error` when the disk is full, and for other failures.
    void write(std::string_view text);
    /// Has everything on disk before and after the file takes its place. Throws `Error`.
    void commit();

private:
    void flush();
    void takeOverFrom(const std::string& target) const;
    void syncDirectory() const;
    [[noreturn]] void fail(const char* what) const;

    std::string m_path;    ///< as it was given, for messages
    std::string m_target;  ///< the real file
    std::string m_temporary;
    std::string m_buffer;
    int m_descriptor = -1;
};

}  // namespace kshmi
