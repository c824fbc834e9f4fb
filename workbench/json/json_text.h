#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace workbench {

/// Appends a text as a JSON string: quoted, only what must be escaped is.
void appendJsonText(std::string& out, std::string_view utf8);
/// The same for well-formed UTF-16.
void appendJsonText(std::string& out, std::u16string_view text);

/// Appends a JSON array on one line; `append(i)` appends its i-th element (0-based).
template <typename Append>
void appendJsonList(std::string& out, std::size_t count, Append append) {
    out += '[';
    for (std::size_t i = 0; i < count; ++i) {
        if (i > 0) out += ", ";
        append(i);
    }
    out += ']';
}

}  // namespace workbench
