#pragma once

#include <span>
#include <string_view>
#include <vector>

#include "host/api.h"
#include "host/hv_array.h"

namespace orvex {

/// Calls by name like `kssvFEVAL`, with owned results: `nOut` of them, at least one.
OX_API std::vector<HvArrayPtr> callByName(std::string_view name, std::span<const hvArray* const> ins, int nOut);
/// The same past all functions: a class's constructor or static method by its full name, else a method of the first
/// input's class. A function of a method's name does not get in its way.
OX_API std::vector<HvArrayPtr> callMember(std::string_view name, std::span<const hvArray* const> ins, int nOut);

}  // namespace orvex
