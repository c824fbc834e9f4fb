#pragma once

#include <string>
#include <string_view>

namespace workbench {

/// The path that stands for standard input and output.
inline constexpr std::string_view kStandardStream = "-";

/// What messages call a file that is read: its path, or "standard input".
std::string calledInMessages(const std::string& path);
/// The same of a file that was saved: its path, or "standard output".
std::string calledWhenSaved(const std::string& path);

/// All that comes in on standard input. Throws `Error` when it cannot be read.
std::string readStandardInput();

}  // namespace workbench
