#pragma once

#include <string>

#include "workbench/text/error.h"

namespace workbench {

/// Throws `Error` for a file that cannot be imported: where, what is wrong there, and what mends it.
[[noreturn]] void failImport(ErrorPlace place, const std::string& text, const std::string& remedy,
                             ErrorCode code = ErrorCode::format);

}  // namespace workbench
