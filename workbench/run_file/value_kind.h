#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace workbench {

/// What the values of a recorded signal are.
enum class ValueKind : std::uint8_t { real, integer, boolean, enumeration, text, binary };

/// "real", "integer", ...
const char* nameOf(ValueKind kind) noexcept;
/// The other way round; nothing for any other text.
std::optional<ValueKind> valueKindOf(std::string_view name) noexcept;

}  // namespace workbench
