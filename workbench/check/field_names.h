#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/hv_array.h"

namespace workbench {

/// Whether a text can name a field of the host: a letter, then letters, digits and underscores.
bool isFieldName(std::string_view text) noexcept;

/// Names of fields in a value, at any depth, that cannot be a field's: "gain x" at the top, "filter.gain x" below
/// "filter". Each once.
std::vector<std::string> wrongFieldNames(const hvArray* value);

/// A copy without the fields of such names; null for null.
HvArrayPtr withoutWrongFields(const hvArray* value);

}  // namespace workbench
