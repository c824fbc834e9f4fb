#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "host/hv_array.h"

/// Owned host values and the library's rules for reading them.
namespace ks_hmi_foundation {

HvArrayPtr makeText(std::u16string_view text);
HvArrayPtr makeText(std::string_view utf8);
HvArrayPtr makeDouble(double value);
HvArrayPtr makeLogical(bool value);
/// 1.0 or 0.0: saved models carry flags as doubles.
HvArrayPtr makeFlag(bool value);
/// A 0x0 double, which stands for a value that is not there.
HvArrayPtr makeEmpty();
/// A 1x1 struct with those fields, all empty.
HvArrayPtr makeScalarStruct(std::span<const char* const> fieldNames);

/// Replaces the field's value, releasing what was there; takes `value` over also when that fails.
void setField(hvArray* structArray, std::size_t index, const char* name, HvArrayPtr value);

/// A struct array: the class word with bit 0x10 cleared is 2, so that 2 and 18 both count.
bool isStruct(const hvArray* value) noexcept;
/// A character array: the class word is 4.
bool isText(const hvArray* value) noexcept;

/// The value's UTF-16 text, all elements in storage order; empty for a null value and any other class.
std::u16string textOf(const hvArray* value);
/// The same in UTF-8.
std::string narrowTextOf(const hvArray* value);

/// Element `index` (0-based) of a numeric or logical array as a double; nothing when there is no such number.
std::optional<double> numberAt(const hvArray* value, std::size_t index) noexcept;

/// Truncates toward zero and saturates; NaN is 0.
std::int32_t toInt32(double number) noexcept;

/// Takes the value out of every scope and hands it back: it outlives host calls, and its holder releases it.
HvArrayPtr detached(HvArrayPtr value) noexcept;

/// Registers the value with the running host call and hands it back; the holder still releases it first.
HvArrayPtr inLocalScope(HvArrayPtr value) noexcept;

}  // namespace ks_hmi_foundation
