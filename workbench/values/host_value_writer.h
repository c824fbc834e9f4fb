#pragma once

#include <string>

#include "host/hv_array.h"

namespace workbench {

/// Appends the JSON form of a host value, on one line, as docs/model-file.md maps them; `null` for a null
/// value. Throws `Error` for host objects, which cannot be saved.
void appendJsonValue(std::string& out, const hvArray* value);

/// The same for a 1x1 struct whose fields are in no particular order: they are written sorted by name.
void appendJsonFieldsSorted(std::string& out, const hvArray* value);

}  // namespace workbench
