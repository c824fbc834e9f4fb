#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace workbench {

/// What the values of a recorded signal are.
enum class ValueKind : std::uint8_t { real, integer, boolean, enumeration, text, binary };

/// What a value of an enumeration is called. The name is UTF-8.
struct ValueName {
    std::int64_t value = 0;
    std::string name;
};
using ValueNames = std::vector<ValueName>;
/// Null when the value has no name.
const std::string* findName(const ValueNames& names, std::int64_t value) noexcept;

/// "real", "integer", ...
const char* nameOf(ValueKind kind) noexcept;
/// The other way round; nothing for any other text.
std::optional<ValueKind> valueKindOf(std::string_view name) noexcept;

}  // namespace workbench
