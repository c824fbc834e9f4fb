#pragma once

#include <string>
#include <string_view>

namespace workbench {

/// Appends a text as a JSON string: quoted, only what must be escaped is.
void appendJsonText(std::string& out, std::string_view utf8);
/// The same for well-formed UTF-16.
void appendJsonText(std::string& out, std::u16string_view text);

}  // namespace workbench
