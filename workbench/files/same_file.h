#pragma once

#include <filesystem>
#include <string_view>
#include <system_error>

#include "workbench/files/standard_stream.h"

namespace workbench {

/// Whether two paths lead to one file that is there, also by links. Never so of the standard stream.
inline bool isSameFile(std::string_view path, std::string_view other) {
    std::error_code code;
    return path != kStandardStream && other != kStandardStream && std::filesystem::equivalent(path, other, code);
}

}  // namespace workbench
