#include "workbench/import/archive.h"

#include <fmt/format.h>

#include <sys/stat.h>
#include <zip.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <set>
#include <utility>

#include "workbench/import/import_error.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

constexpr std::size_t kArchiveChunk = 65536;

std::string textOfError(zip_error_t& error) {
    std::string text = ::zip_error_strerror(&error);
    ::zip_error_fini(&error);
    return text;
}

[[noreturn]] void failOpening(const std::string& name, const std::string& why) {
    failImport({name}, "cannot be opened as an archive: " + why, "check that the file is whole");
}

bool isLink(zip* archive, std::uint64_t index) noexcept {
    zip_uint8_t system = 0;
    zip_uint32_t attributes = 0;
    if (::zip_file_get_external_attributes(archive, index, 0, &system, &attributes) != 0) return false;
    return system == ZIP_OPSYS_UNIX && S_ISLNK(attributes >> 16U);
}

// As the format has it: many programs write what their system calls paths, "binaries\\linux64\\x.so" or "./x.xml".
std::string properName(std::string name) {
    std::replace(name.begin(), name.end(), '\\', '/');
    while (name.starts_with("./")) name.erase(0, 2);
    return name;
}

struct FileCloser {
    void operator()(zip_file_t* file) const noexcept { ::zip_fclose(file); }
};

}  // namespace

bool isInsideName(std::string_view name) noexcept {
    if (name.empty() || name.front() == '/' || name.find('\0') != std::string_view::npos) return false;
    if (name.find('\\') != std::string_view::npos || name.find(':') == 1) return false;
    while (!name.empty()) {
        const std::size_t end = name.find('/');
        const std::string_view part = name.substr(0, end);
        if (part.empty() || part == "." || part == "..") return false;
        name = end == std::string_view::npos ? std::string_view() : name.substr(end + 1);
    }
    return true;
}

void Archive::Closer::operator()(zip* archive) const noexcept { ::zip_discard(archive); }

Archive::Archive(std::string name, std::unique_ptr<std::string> bytes, zip* archive, const ArchiveLimits& limits)
    : m_name(std::move(name)), m_limits(limits), m_bytes(std::move(bytes)), m_zip(archive) {
    checkEntries();
}

Archive Archive::ofFile(const std::string& path, const ArchiveLimits& limits) {
    int code = 0;
    zip* const archive = ::zip_open(path.c_str(), ZIP_RDONLY, &code);
    if (archive) return {path, nullptr, archive, limits};
    zip_error_t error;
    ::zip_error_init_with_code(&error, code);
    failOpening(path, textOfError(error));
}

Archive Archive::ofBytes(std::string name, std::string bytes, const ArchiveLimits& limits) {
    auto kept = std::make_unique<std::string>(std::move(bytes));
    zip_error_t error;
    ::zip_error_init(&error);
    zip_source_t* const source = ::zip_source_buffer_create(kept->data(), kept->size(), 0, &error);
    if (!source) failOpening(name, textOfError(error));
    if (zip* const archive = ::zip_open_from_source(source, ZIP_RDONLY, &error))
        return {std::move(name), std::move(kept), archive, limits};
    ::zip_source_free(source);
    failOpening(name, textOfError(error));
}

void Archive::checkEntries() {
    const auto count = static_cast<std::uint64_t>(std::max<zip_int64_t>(::zip_get_num_entries(m_zip.get(), 0), 0));
    if (count > m_limits.entries)
        fail(fmt::format("has {} entries, more than {}", count, m_limits.entries), "leave out what is not needed");
    std::uint64_t total = 0;
    for (std::uint64_t i = 0; i < count; ++i) {
        total += checkEntry(i);
        if (total > m_limits.totalBytes)
            fail(fmt::format("unpacks to more than {} bytes", m_limits.totalBytes), "leave out what is not needed");
    }
    std::set<std::string_view> seen;
    for (const std::string& name : m_names)
        if (!name.empty() && !seen.insert(name).second) failEntry(name, "appears twice");
}

std::uint64_t Archive::checkEntry(std::uint64_t index) {
    zip_stat_t status;
    ::zip_stat_init(&status);
    constexpr auto kNeeded = ZIP_STAT_NAME | ZIP_STAT_SIZE | ZIP_STAT_COMP_SIZE;
    if (::zip_stat_index(m_zip.get(), index, 0, &status) != 0 || (status.valid & kNeeded) != kNeeded)
        fail(fmt::format("entry {} has no name or no size", index + 1), "have the archive made again");
    const std::string given = toUtf8(toUtf16(status.name));
    const std::string name = properName(given);
    // "./" is the target itself.
    if (!isInsideName(properName(status.name)) && (!name.empty() || given.empty()))
        failEntry(given, "would be unpacked outside the target");
    if (isLink(m_zip.get(), index)) failEntry(name, "is a link");
    if ((status.valid & ZIP_STAT_ENCRYPTION_METHOD) != 0 && status.encryption_method != ZIP_EM_NONE)
        failEntry(name, "is encrypted");
    if (status.size > m_limits.entryBytes)
        failEntry(name, fmt::format("unpacks to more than {} bytes", m_limits.entryBytes));
    if (status.size > m_limits.ratioFreeBytes && status.size / m_limits.ratio > status.comp_size)
        failEntry(name, fmt::format("unpacks to more than {} times its size", m_limits.ratio));
    m_names.push_back(name);
    m_sizes.push_back(status.size);
    return status.size;
}

bool Archive::has(std::string_view name) const noexcept {
    return std::find(m_names.begin(), m_names.end(), name) != m_names.end();
}

template <class Take>
void Archive::unpack(std::size_t position, Take take) const {
    const std::string& name = m_names[position];
    const std::unique_ptr<zip_file_t, FileCloser> file(::zip_fopen_index(m_zip.get(), position, 0));
    if (!file) failEntry(name, std::string("cannot be unpacked: ") + ::zip_strerror(m_zip.get()));
    std::array<char, kArchiveChunk> chunk;
    std::uint64_t total = 0;
    // The size in the list need not be true.
    while (total <= m_sizes[position]) {
        const zip_int64_t size = ::zip_fread(file.get(), chunk.data(), chunk.size());
        if (size < 0) failEntry(name, std::string("is damaged: ") + ::zip_file_strerror(file.get()));
        if (size == 0) break;
        total += static_cast<std::uint64_t>(size);
        take(std::string_view(chunk.data(), static_cast<std::size_t>(size)));
    }
    if (total != m_sizes[position]) failEntry(name, "is damaged: it does not have the size that it says it has");
}

std::string Archive::read(const std::string& name) const {
    const auto found = std::find(m_names.begin(), m_names.end(), name);
    if (found == m_names.end()) fail("holds no " + inQuotes(name), "check that it is the right archive");
    const auto position = static_cast<std::size_t>(found - m_names.begin());
    if (m_sizes[position] > m_limits.documentBytes)
        failEntry(name, fmt::format("unpacks to more than {} bytes", m_limits.documentBytes));
    std::string contents;
    contents.reserve(static_cast<std::size_t>(m_sizes[position]));
    unpack(position, [&](std::string_view piece) { contents += piece; });
    return contents;
}

void Archive::extractTo(const std::string& folder) const {
    for (std::size_t i = 0; i < m_names.size(); ++i) {
        const std::string path = fmt::format("{}/{}", folder, m_names[i]);
        for (std::size_t end = path.find('/', folder.size() + 1); end != std::string::npos;
             end = path.find('/', end + 1))
            ::mkdir(path.substr(0, end).c_str(), S_IRWXU);
        if (!path.ends_with('/')) extract(i, path);
    }
}

void Archive::extract(std::size_t position, const std::string& path) const {
    struct stat status {};
    if (::lstat(path.c_str(), &status) == 0) failEntry(m_names[position], "would replace " + inQuotes(path));
    std::ofstream file(path, std::ios::binary);
    unpack(position, [&](std::string_view piece) {
        file.write(piece.data(), static_cast<std::streamsize>(piece.size()));
        if (!file) failEntry(m_names[position], "cannot be written to " + inQuotes(path));
    });
    file.close();
    if (!file) failEntry(m_names[position], "cannot be written to " + inQuotes(path));
}

void Archive::fail(const std::string& text, const std::string& remedy) const { failImport({m_name}, text, remedy); }

void Archive::failEntry(std::string_view entry, const std::string& text) const {
    fail(fmt::format("the entry {} {}", inQuotes(entry), text), "have the archive made again");
}

}  // namespace workbench
