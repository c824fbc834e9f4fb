#pragma once

#include <string>
#include <string_view>

#include "host/hv_array.h"

namespace workbench {

/// The class that a name in "$class" stands for, `hvUNKNOWN_CLASS` when it is none; and the other way round.
hvClassID classOfName(std::string_view name) noexcept;
const char* nameOfClass(hvClassID classId) noexcept;
/// All names, with commas between.
std::string classNames();

}  // namespace workbench
