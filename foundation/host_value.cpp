#include "foundation/host_value.h"

#include <cmath>
#include <limits>

#include "host/services.h"

namespace ks_hmi_foundation {

namespace {

constexpr std::uint32_t kStructWord = 2;
constexpr std::uint32_t kTextWord = 4;
constexpr std::uint32_t kIgnoredBit = 0x10;
constexpr std::size_t kScalar[] = {1, 1};

template <class Number>
double numberOf(const hvArray* value, std::size_t index) noexcept {
    return static_cast<double>(static_cast<const Number*>(hvGetData(value))[index]);
}

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

std::optional<double> numberAt(const hvArray* value, std::size_t index) noexcept {
    if (index >= hvGetNumberOfElements(value)) return std::nullopt;
    switch (hvGetClassID(value)) {
        case hvDOUBLE_CLASS:
            return numberOf<double>(value, index);
        case hvLOGICAL_CLASS:
            return numberOf<bool>(value, index);
        case hvSINGLE_CLASS:
            return numberOf<float>(value, index);
        case hvINT8_CLASS:
            return numberOf<std::int8_t>(value, index);
        case hvUINT8_CLASS:
            return numberOf<std::uint8_t>(value, index);
        case hvINT16_CLASS:
            return numberOf<std::int16_t>(value, index);
        case hvUINT16_CLASS:
            return numberOf<std::uint16_t>(value, index);
        case hvINT32_CLASS:
            return numberOf<std::int32_t>(value, index);
        case hvUINT32_CLASS:
            return numberOf<std::uint32_t>(value, index);
        case hvINT64_CLASS:
            return numberOf<std::int64_t>(value, index);
        case hvUINT64_CLASS:
            return numberOf<std::uint64_t>(value, index);
        default:
            return std::nullopt;
    }
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

HvArrayPtr inLocalScope(HvArrayPtr value) noexcept {
    if (value) kssvSetLocalScope(value.get());
    return value;
}

}  // namespace ks_hmi_foundation
