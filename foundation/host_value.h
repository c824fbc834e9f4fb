#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "host/hv_array.h"
#include "host/values.h"

/// The host values of the library's own making, beside those that everybody makes.
namespace ks_hmi_foundation {

using ks_host::isStruct;
using ks_host::isText;
using ks_host::makeDouble;
using ks_host::makeEmpty;
using ks_host::makeLogical;
using ks_host::makeText;
using ks_host::numberAt;
using ks_host::textOf;
using ks_host::utf8TextOf;

/// 1.0 or 0.0: saved models carry flags as doubles.
HvArrayPtr makeFlag(bool value);
/// A 1x1 struct with those fields, all empty.
HvArrayPtr makeScalarStruct(std::span<const char* const> fieldNames);

/// Replaces the field's value, releasing what was there; takes `value` over also when that fails.
void setField(hvArray* structArray, std::size_t index, const char* name, HvArrayPtr value);

/// Truncates toward zero and saturates; NaN is 0.
std::int32_t toInt32(double number) noexcept;

/// Gives the value scope 0, as a result that is handed back to the host, and hands it back.
HvArrayPtr detached(HvArrayPtr value) noexcept;

/// Takes the value out of every scope and hands it back: it outlives host calls, and its holder releases it.
HvArrayPtr persistent(HvArrayPtr value) noexcept;

/// Registers the value with the running host call and hands it back; the holder still releases it first.
HvArrayPtr inLocalScope(HvArrayPtr value) noexcept;

}  // namespace ks_hmi_foundation
