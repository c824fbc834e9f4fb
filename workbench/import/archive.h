#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

struct zip;

namespace workbench {

/// What an archive may hold at most; whoever made it need not be trusted.
struct ArchiveLimits {
    std::size_t entries = 65536;
    std::uint64_t entryBytes = std::uint64_t{2} << 30U;       ///< unpacked
    std::uint64_t totalBytes = std::uint64_t{8} << 30U;       ///< unpacked
    std::uint64_t documentBytes = std::uint64_t{256} << 20U;  ///< of what is read into memory
    /// Unpacked bytes for each packed one, of entries above `ratioFreeBytes`.
    std::uint64_t ratio = 500;
    std::uint64_t ratioFreeBytes = std::uint64_t{1} << 20U;
};

/// Whether a name, with '/' between its parts, stays below the folder that it is unpacked to.
bool isInsideName(std::string_view name) noexcept;

/// A zip archive. Opening it looks at its list of contents: an entry that would land outside of the target, links,
/// encrypted entries, names that are there twice and sizes beyond the limits are refused with `Error`.
class Archive {
public:
    static Archive ofFile(const std::string& path, const ArchiveLimits& limits = {});
    /// Bytes instead of a file; they are kept. `name` stands for the path in messages.
    static Archive ofBytes(std::string name, std::string bytes, const ArchiveLimits& limits = {});

    /// Whether bytes begin as an archive does.
    static bool isArchive(std::string_view bytes) noexcept { return bytes.starts_with("PK\x03\x04"); }

    /// Of all entries, folders too, in the archive's order, with '/' between their parts whatever the archive has;
    /// empty for the target itself.
    const std::vector<std::string>& names() const noexcept { return m_names; }
    bool has(std::string_view name) const noexcept;
    /// The contents of an entry. Throws `Error` when it is not there, is damaged, or has more than
    /// `ArchiveLimits::documentBytes`.
    std::string read(const std::string& name) const;
    /// Unpacks everything below an existing folder; files of the same name are not replaced. Throws `Error` for what
    /// is damaged or cannot be written; what was unpacked by then stays.
    void extractTo(const std::string& folder) const;

private:
    struct Closer {
        void operator()(zip* archive) const noexcept;
    };
    struct Entry {
        std::uint64_t index;
        std::uint64_t size;
    };
    Archive(std::string name, std::unique_ptr<std::string> bytes, zip* archive, const ArchiveLimits& limits);
    void checkEntries();
    std::uint64_t checkEntry(std::uint64_t index);
    template <class Take>
    void unpack(std::size_t position, Take take) const;
    void extract(std::size_t position, const std::string& path) const;
    [[noreturn]] void fail(const std::string& text, const std::string& remedy) const;
    [[noreturn]] void failEntry(std::string_view entry, const std::string& text) const;

    std::string m_name;
    ArchiveLimits m_limits;
    std::unique_ptr<std::string> m_bytes;  ///< outlives the archive that reads them
    std::unique_ptr<zip, Closer> m_zip;
    std::vector<std::string> m_names;
    std::vector<std::uint64_t> m_sizes;
};

}  // namespace workbench
