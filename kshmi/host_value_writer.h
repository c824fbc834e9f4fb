#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "host/hv_array.h"

namespace kshmi {

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

/// Appends the JSON form of a host value, on one line, as docs/model-file.md maps them; `null` for a null
/// value. Throws `Error` for host objects, which cannot be saved.
void appendJsonValue(std::string& out, const hvArray* value);

/// The same for a 1x1 struct whose fields are in no particular order: they are written sorted by name.
void appendJsonFieldsSorted(std::string& out, const hvArray* value);

}  // namespace kshmi
