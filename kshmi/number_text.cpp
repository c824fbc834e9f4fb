#include "kshmi/number_text.h"

#include <fmt/format.h>

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <limits>
#include <system_error>
#include <type_traits>

#include "kshmi/error.h"
#include "kshmi/text.h"

namespace kshmi {

namespace {

constexpr std::string_view kNan = "NaN";
constexpr std::string_view kNanBits = "NaN:";
constexpr std::string_view kInfinity = "Infinity";
constexpr std::string_view kMinusInfinity = "-Infinity";

template <typename T>
T parsed(std::string_view text, const char* wanted) {
    using Limits = std::numeric_limits<T>;
    T value{};
    const char* const end = text.data() + text.size();
    const auto [stop, code] = std::from_chars(text.data(), end, value);
    if (code == std::errc() && stop == end) return value;
    throw Error(fmt::format("the number {} is no {}; give a {}number from {} to {}", text, wanted,
                            std::is_integral_v<T> ? "whole " : "", Limits::lowest(), Limits::max()));
}

template <typename T, typename... Base>
std::string written(T value, Base... base) {
    std::array<char, 64> buffer{};
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, base...);
    return {buffer.data(), result.ptr};
}

template <typename Float>
using BitsOf = std::conditional_t<sizeof(Float) == sizeof(double), std::uint64_t, std::uint32_t>;

template <typename Float>
std::string textOfFloat(Float value) {
    if (value == 0 && std::signbit(value)) return "-0.0";
    return written(value);
}

template <typename Float>
std::string textOfFloatElement(BitsOf<Float> bits) {
    const auto value = std::bit_cast<Float>(bits);
    if (std::isfinite(value)) return textOfFloat(value);
    std::string text(value > 0 ? kInfinity : kMinusInfinity);
    if (std::isnan(value)) {
        const bool isUsual = bits == std::bit_cast<BitsOf<Float>>(std::numeric_limits<Float>::quiet_NaN());
        text = isUsual ? std::string(kNan) : std::string(kNanBits) + written(bits, 16);
    }
    return '"' + text + '"';
}

template <typename Float>
std::uint64_t floatOfText(std::string_view text) {
    using Limits = std::numeric_limits<Float>;
    using Bits = BitsOf<Float>;
    if (text == kNan) return std::bit_cast<Bits>(Limits::quiet_NaN());
    if (text == kInfinity) return std::bit_cast<Bits>(Limits::infinity());
    if (text == kMinusInfinity) return std::bit_cast<Bits>(-Limits::infinity());
    Bits bits{};
    const char* const end = text.data() + text.size();
    const bool isNan = text.starts_with(kNanBits) &&
                       std::from_chars(text.data() + kNanBits.size(), end, bits, 16).ptr == end &&
                       std::isnan(std::bit_cast<Float>(bits));
    if (!isNan) throw Error(quoted(text) + R"( is no number; allowed are "NaN", "Infinity" and "-Infinity")");
    return bits;
}

template <typename T>
std::uint64_t integerBits(std::string_view text, const char* className) {
    return static_cast<std::uint64_t>(parsed<T>(text, className));
}

}  // namespace

std::string textOfNumber(double value) { return textOfFloat(value); }

double numberOfText(std::string_view text) { return parsed<double>(text, "double"); }

std::size_t lengthOfText(std::string_view text) { return parsed<std::size_t>(text, "length"); }

std::string textOfElement(hvClassID classId, std::uint64_t bits) {
    switch (classId) {
        case hvDOUBLE_CLASS:
            return textOfFloatElement<double>(bits);
        case hvSINGLE_CLASS:
            return textOfFloatElement<float>(static_cast<std::uint32_t>(bits));
        case hvLOGICAL_CLASS:
            return bits ? "true" : "false";
        case hvINT8_CLASS:
        case hvINT16_CLASS:
        case hvINT32_CLASS:
        case hvINT64_CLASS:
            return written(static_cast<std::int64_t>(bits));
        default:
            return written(bits);
    }
}

std::uint64_t elementOfNumber(hvClassID classId, std::string_view text) {
    switch (classId) {
        case hvDOUBLE_CLASS:
            return std::bit_cast<std::uint64_t>(numberOfText(text));
        case hvSINGLE_CLASS:
            return std::bit_cast<std::uint32_t>(parsed<float>(text, "single"));
        case hvINT8_CLASS:
            return integerBits<std::int8_t>(text, "int8");
        case hvUINT8_CLASS:
            return integerBits<std::uint8_t>(text, "uint8");
        case hvINT16_CLASS:
            return integerBits<std::int16_t>(text, "int16");
        case hvCHAR_CLASS:
            return integerBits<std::uint16_t>(text, "UTF-16 code unit");
        case hvUINT16_CLASS:
            return integerBits<std::uint16_t>(text, "uint16");
        case hvINT32_CLASS:
            return integerBits<std::int32_t>(text, "int32");
        case hvUINT32_CLASS:
            return integerBits<std::uint32_t>(text, "uint32");
        case hvINT64_CLASS:
            return integerBits<std::int64_t>(text, "int64");
        case hvUINT64_CLASS:
            return integerBits<std::uint64_t>(text, "uint64");
        default:
            throw Error("the number " + std::string(text) + " stands where true or false belongs");
    }
}

std::uint64_t elementOfText(hvClassID classId, std::string_view text) {
    if (classId == hvDOUBLE_CLASS) return floatOfText<double>(text);
    if (classId == hvSINGLE_CLASS) return floatOfText<float>(text);
    throw Error("the text " + quoted(text) + " stands where an element of the array belongs");
}

std::size_t elementSize(hvClassID classId) noexcept {
    switch (classId) {
        case hvLOGICAL_CLASS:
            return sizeof(bool);
        case hvINT8_CLASS:
        case hvUINT8_CLASS:
            return sizeof(std::uint8_t);
        case hvCHAR_CLASS:
        case hvINT16_CLASS:
        case hvUINT16_CLASS:
            return sizeof(std::uint16_t);
        case hvSINGLE_CLASS:
        case hvINT32_CLASS:
        case hvUINT32_CLASS:
            return sizeof(std::uint32_t);
        case hvDOUBLE_CLASS:
        case hvINT64_CLASS:
        case hvUINT64_CLASS:
            return sizeof(std::uint64_t);
        default:
            return 0;
    }
}

}  // namespace kshmi
