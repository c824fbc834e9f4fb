#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <string>

#include "python/native/host_turn.h"

/// What Python hands over as a dictionary of named arguments, for settings and options. An argument that is missing or
/// None is nothing. Throw Python's TypeError for a value of another kind, which they name.
namespace ks_hmi_python {

inline constexpr std::int64_t kLargestInt = std::numeric_limits<std::int32_t>::max();
inline constexpr std::int64_t kLargestUint = std::numeric_limits<std::uint32_t>::max();

std::optional<std::string> textIn(const py::dict& arguments, const char* name);
std::optional<bool> truthIn(const py::dict& arguments, const char* name);
/// Also throws `workbench::Error` for a number out of range.
std::optional<std::int64_t> numberIn(const py::dict& arguments, const char* name, std::int64_t least,
                                     std::int64_t most);
/// What is there, as that type.
[[noreturn]] void refuseKind(const py::dict& arguments, const char* name);
template <class Value>
Value castArgument(const py::dict& arguments, const char* name) {
    try {
        return arguments[name].cast<Value>();
    } catch (const py::cast_error&) {
        refuseKind(arguments, name);
    }
}

template <class Number>
void takeNumber(const py::dict& arguments, const char* name, std::int64_t least, std::int64_t most,
                std::optional<Number>& number) {
    if (const auto given = numberIn(arguments, name, least, most)) number = static_cast<Number>(*given);
}

}  // namespace ks_hmi_python
