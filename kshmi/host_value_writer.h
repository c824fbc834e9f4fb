#pragma once

#include <string>
#include <string_view>

#include "host/hv_array.h"

namespace kshmi {

/// Appends a text as a JSON string: quoted, only what must be escaped is.
void appendJsonText(std::string& out, std::string_view utf8);
/// The same for well-formed UTF-16.
void appendJsonText(std::string& out, std::u16string_view text);

/// Appends the JSON form of a host value, on one line, as docs/model-file.md maps them; `null` for a null
/// value. Throws `Error` for host objects, which cannot be saved.
void appendJsonValue(std::string& out, const hvArray* value);

/// The same for a 1x1 struct whose fields are in no particular order: they are written sorted by name.
void appendJsonFieldsSorted(std::string& out, const hvArray* value);

}  // namespace kshmi
