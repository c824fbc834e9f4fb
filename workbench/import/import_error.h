#pragma once

#include <cstddef>
#include <string>

namespace workbench {

/// Throws `Error` for a file that cannot be imported: what is wrong in which line (0: the file as a whole), and what
/// mends it.
[[noreturn]] void failImport(const std::string& file, std::size_t line, const std::string& text,
                             const std::string& remedy);

}  // namespace workbench
