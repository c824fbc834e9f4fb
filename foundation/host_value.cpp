#include "foundation/host_value.h"

#include "host/services.h"

namespace ks_hmi_foundation {

namespace {

constexpr std::uint32_t kStructWord = 2;
constexpr std::uint32_t kTextWord = 4;
constexpr std::uint32_t kIgnoredBit = 0x10;
constexpr std::size_t kScalar[] = {1, 1};

}  // namespace

HvArrayPtr makeText(std::u16string_view text) { return HvArrayPtr(matrix::create(text.data(), text.size())); }

HvArrayPtr makeText(std::string_view utf8) { return HvArrayPtr(matrix::create(utf8.data(), utf8.size())); }

HvArrayPtr makeDouble(double value) { return HvArrayPtr(hvCreateDoubleScalar(value)); }

HvArrayPtr makeLogical(bool value) { return HvArrayPtr(hvCreateLogicalScalar(value)); }

HvArrayPtr makeFlag(bool value) { return makeDouble(value ? 1.0 : 0.0); }

HvArrayPtr makeEmpty() { return HvArrayPtr(hvCreateNumericMatrix(0, 0, hvDOUBLE_CLASS, hvREAL)); }

HvArrayPtr makeScalarStruct(std::span<const char* const> fieldNames) {
    return HvArrayPtr(matrix::create_struct(kScalar, fieldNames));
}

void setField(hvArray* structArray, std::size_t index, const char* name, HvArrayPtr value) {
    hvReplaceField(structArray, index, name, value.release());
}

bool isStruct(const hvArray* value) noexcept { return (hvGetClassWord(value) & ~kIgnoredBit) == kStructWord; }

bool isText(const hvArray* value) noexcept { return hvGetClassWord(value) == kTextWord; }

std::u16string textOf(const hvArray* value) { return isText(value) ? matrix::get_ustring(value) : std::u16string(); }

std::string narrowTextOf(const hvArray* value) { return isText(value) ? hvArrayToStdString(value) : std::string(); }

HvArrayPtr inLocalScope(HvArrayPtr value) noexcept {
    if (value) kssvSetLocalScope(value.get());
    return value;
}

}  // namespace ks_hmi_foundation
