#include "foundation/host_value.h"

#include <cmath>
#include <limits>

#include "host/services.h"

namespace ks_hmi_foundation {

namespace {

constexpr std::size_t kScalar[] = {1, 1};

}  // namespace

HvArrayPtr makeFlag(bool value) { return makeDouble(value ? 1.0 : 0.0); }

HvArrayPtr makeScalarStruct(std::span<const char* const> fieldNames) {
    return HvArrayPtr(matrix::create_struct(kScalar, fieldNames));
}

void setField(hvArray* structArray, std::size_t index, const char* name, HvArrayPtr value) {
    hvReplaceField(structArray, index, name, value.release());
}

std::int32_t toInt32(double number) noexcept {
    using Limits = std::numeric_limits<std::int32_t>;
    if (std::isnan(number)) return 0;
    if (number <= Limits::min()) return Limits::min();
    if (number >= Limits::max()) return Limits::max();
    return static_cast<std::int32_t>(number);
}

HvArrayPtr detached(HvArrayPtr value) noexcept {
    if (value) hvSetArrayScope(value.get(), hvSCOPE_NONE);
    return value;
}

HvArrayPtr persistent(HvArrayPtr value) noexcept {
    if (value) hvSetArrayScope(value.get(), nullptr);
    return value;
}

HvArrayPtr inLocalScope(HvArrayPtr value) noexcept {
    if (value) kssvSetLocalScope(value.get());
    return value;
}

}  // namespace ks_hmi_foundation
