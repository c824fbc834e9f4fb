#pragma once

#include <memory>
#include <span>

#include "memory_host/orvex/values/hv_array_impl.h"

namespace orvex {

/// The names as a list that struct arrays share: structs made one after another with the same names
/// get the same list. Throws for a null, empty or repeated name.
std::shared_ptr<const FieldNames> sharedFieldNames(std::span<const char* const> names);

/// The names in one line for messages: "a, b, c", or "none".
std::string joinedFieldNames(const FieldNames& names);

}  // namespace orvex
