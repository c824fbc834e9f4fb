#pragma once

#include <signal.h>
#include <sys/stat.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "workbench/files/file_version.h"
#include "workbench/text/error.h"

namespace workbench {

/// Replaces a file as a whole: what is written goes to a new file beside it, which takes its place on
/// `commit`. Until then, and after any failure, the file is as it was and nothing is left beside it.
/// Where `path` is a symbolic link, the file that it leads to is replaced. The new file keeps the
/// permissions, access control lists, user extended attributes, group and, where it can, owner of the old one. Signals
/// that end the program wait until the new file has taken its place or is gone, and a limit on file sizes is a failure
/// like a full disk. Who else saves the file in the meantime is refused.
class AtomicFile {
public:
    /// Throws `Error` when the new file cannot be made, and for an old one that is no regular file, that must not be
    /// written, whose group, permissions, access control list or user extended attributes cannot be kept, or that
    /// somebody else is saving. With `replaced` only that version of the file is replaced.
    explicit AtomicFile(const std::string& path, std::optional<FileVersion> replaced = std::nullopt);
    struct New {};
    static constexpr New kNew{};
    /// A file that is not there yet. Throws `Error` when it is, here or on `commit`.
    AtomicFile(New, const std::string& path);
    AtomicFile(const AtomicFile&) = delete;
    AtomicFile& operator=(const AtomicFile&) = delete;
    ~AtomicFile();

    /// What a save changes besides the contents: an owner that cannot be kept, further names (hard links) that stay
    /// with the old contents. One sentence each, without the file's name; empty for a new file.
    const std::vector<std::string>& warnings() const noexcept { return m_warnings; }

    /// Buffered. Throws `Error` when the disk is full, and for other failures.
    void write(std::string_view text);
    /// Has everything on disk before and after the file takes its place. Throws `Error`, also when the file is no
    /// longer the version to replace. Returns the new version.
    FileVersion commit();

private:
    /// Holds the signals back while it lives.
    class Uninterrupted {
    public:
        Uninterrupted() noexcept;
        Uninterrupted(const Uninterrupted&) = delete;
        Uninterrupted& operator=(const Uninterrupted&) = delete;
        ~Uninterrupted();

    private:
        sigset_t m_mask{};
        struct sigaction m_sizeLimit {};
    };

    void prepare();
    void takePlace();
    void lock();
    void makeTemporary();
    void flush();
    void takeOverFrom(const struct stat& old);
    void takeOverOwner(const struct stat& old);
    void takeOverAttributes() const;
    void takeOver(const char* attribute) const;
    void syncDirectory() const;
    void requireReplaceable() const;
    void discard() noexcept;
    [[noreturn]] void fail(const char* what) const;
    [[noreturn]] void refuse(const std::string& why, ErrorCode code = ErrorCode::file) const;

    // First of all, so that it ends when nothing is left.
    Uninterrupted m_uninterrupted;
    std::string m_path;    ///< as it was given, for messages
    std::string m_target;  ///< the real file
    std::string m_temporary;
    std::string m_buffer;
    std::optional<FileVersion> m_replaced;
    bool m_isNew = false;
    std::vector<std::string> m_warnings;
    int m_lock = -1;
    int m_descriptor = -1;
};

}  // namespace workbench
