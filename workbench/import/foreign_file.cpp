#include "workbench/import/foreign_file.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <boost/uuid/detail/sha1.hpp>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <utility>

#include "workbench/import/import_error.h"

namespace workbench {

namespace {

constexpr std::size_t kFileChunk = 65536;
constexpr std::size_t kSignatureSize = 4;
constexpr std::array<std::string_view, 2> kDocuments{"SystemStructure.ssd", "modelDescription.xml"};

std::ifstream openFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file)
        failImport({path}, std::string("cannot be opened: ") + std::strerror(errno),
                   "check the path and its permissions", ErrorCode::file);
    std::error_code code;
    if (std::filesystem::is_directory(path, code)) failImport({path}, "is a directory", "name a file", ErrorCode::file);
    return file;
}

std::string wholeFile(const std::string& path, std::ifstream& file, const ArchiveLimits& limits) {
    std::string bytes;
    std::array<char, kFileChunk> chunk;
    do {
        file.read(chunk.data(), chunk.size());
        bytes.append(chunk.data(), static_cast<std::size_t>(file.gcount()));
        if (bytes.size() > limits.documentBytes)
            failImport({path}, fmt::format("has more than {} bytes", limits.documentBytes), "import a smaller model");
    } while (file);
    if (file.bad())
        failImport({path}, std::string("cannot be read: ") + std::strerror(errno), "check the disk", ErrorCode::file);
    return bytes;
}

ForeignDocument fromArchive(const std::string& path, const Archive& archive) {
    for (const std::string_view document : kDocuments)
        if (archive.has(document))
            return {true, fmt::format("{}/{}", path, document), archive.read(std::string(document))};
    for (const std::string& name : archive.names())
        for (const std::string_view document : kDocuments)
            if (name.ends_with("/" + std::string(document)))
                failImport({path}, "has its description in a folder, as " + name,
                           "pack the contents of the folder, not the folder");
    failImport({path}, "holds neither SystemStructure.ssd nor modelDescription.xml",
               "import an .ssp or .fmu archive, or a description itself");
}

}  // namespace

const char* nameOf(ForeignKind kind) noexcept {
    switch (kind) {
        case ForeignKind::ssd:
            return "ssd";
        case ForeignKind::ssp:
            return "ssp";
        case ForeignKind::fmi:
            return "fmi";
        case ForeignKind::fmu:
            break;
    }
    return "fmu";
}

ForeignDocument readForeignFile(const std::string& path, const ArchiveLimits& limits) {
    std::ifstream file = openFile(path);
    std::array<char, kSignatureSize> start{};
    file.read(start.data(), start.size());
    if (Archive::isArchive({start.data(), static_cast<std::size_t>(file.gcount())}))
        return fromArchive(path, Archive::ofFile(path, limits));
    file.clear();
    file.seekg(0);
    return {false, path, wholeFile(path, file, limits)};
}

ForeignDocument readForeignBytes(const std::string& name, std::string bytes, const ArchiveLimits& limits) {
    if (Archive::isArchive(bytes)) return fromArchive(name, Archive::ofBytes(name, std::move(bytes), limits));
    return {false, name, std::move(bytes)};
}

std::string hashOfFile(const std::string& path) {
    std::ifstream file = openFile(path);
    boost::uuids::detail::sha1 sha1;
    std::array<char, kFileChunk> chunk;
    do {
        file.read(chunk.data(), chunk.size());
        sha1.process_bytes(chunk.data(), static_cast<std::size_t>(file.gcount()));
    } while (file);
    if (file.bad())
        failImport({path}, std::string("cannot be read: ") + std::strerror(errno), "check the disk", ErrorCode::file);
    boost::uuids::detail::sha1::digest_type digest;
    sha1.get_digest(digest);
    std::string text = "sha1:";
    for (const unsigned word : digest) text += fmt::format("{:08x}", word);
    return text;
}

}  // namespace workbench
