#pragma once

#include <cstdint>
#include <string>

#include "workbench/import/archive.h"

namespace workbench {

enum class ForeignKind : std::uint8_t {
    ssd,  ///< system structure description
    ssp,  ///< an archive with one
    fmi,  ///< description of a unit
    fmu,  ///< an archive with one
};

/// "ssd", "ssp", "fmi" or "fmu".
const char* nameOf(ForeignKind kind) noexcept;

/// What a foreign file says about its model. Whether it is an archive, and of what, is told by its contents.
struct ForeignDocument {
    bool isPacked = false;
    std::string name;   ///< for messages: "engine.fmu/modelDescription.xml"
    std::string bytes;  ///< XML
};

/// Throws `Error` when the file cannot be read, is none of these kinds or goes beyond the limits.
ForeignDocument readForeignFile(const std::string& path, const ArchiveLimits& limits = {});
/// The same of bytes; `name` stands for the path.
ForeignDocument readForeignBytes(const std::string& name, std::string bytes, const ArchiveLimits& limits = {});

/// "sha1:" and the digest of a file's bytes in hexadecimal digits. Throws `Error` when the file cannot be read.
std::string hashOfFile(const std::string& path);

}  // namespace workbench
