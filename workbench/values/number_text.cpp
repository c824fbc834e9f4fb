#include "workbench/values/number_text.h"

#include <fmt/format.h>

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <limits>
#include <system_error>
#include <type_traits>

#include "memory_host/orvex/values/element_type.h"
#include "workbench/text/error.h"
#include "workbench/text/text.h"
#include "workbench/values/class_names.h"

namespace workbench {

namespace {

constexpr std::string_view kNan = "NaN";
constexpr std::string_view kNanBits = "NaN:";
constexpr std::string_view kInfinity = "Infinity";
constexpr std::string_view kMinusInfinity = "-Infinity";

// For messages.
std::string shortened(std::string_view number) {
    constexpr std::size_t kLongest = 60;
    constexpr std::size_t kHead = 30;
    if (number.size() <= kLongest) return std::string(number);
    return fmt::format("{}... ({} digits)", number.substr(0, kHead), number.size());
}

template <class T>
T parsed(std::string_view text, const char* wanted) {
    using Limits = std::numeric_limits<T>;
    T value{};
    const char* const end = text.data() + text.size();
    const auto [stop, code] = std::from_chars(text.data(), end, value);
    if (code == std::errc() && stop == end) return value;
    throw Error(fmt::format("the number {} is not a valid {}; give a {}number from {} to {}", shortened(text), wanted,
                            std::is_integral_v<T> ? "whole " : "", Limits::lowest(), Limits::max()));
}

template <class T, class... Base>
std::string written(T value, Base... base) {
    std::array<char, 64> buffer{};
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, base...);
    return {buffer.data(), result.ptr};
}

template <class Float>
using BitsOf = std::conditional_t<sizeof(Float) == sizeof(double), std::uint64_t, std::uint32_t>;

template <class Float>
std::string textOfFloat(Float value) {
    if (value == 0 && std::signbit(value)) return "-0.0";
    // Larger ones are shorter with an exponent.
    constexpr Float kShort = 10'000;
    if (std::abs(value) < kShort && value == std::trunc(value)) return written(static_cast<int>(value));
    return written(value);
}

template <class Float>
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

template <class Float>
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
    if (!isNan) throw Error(inQuotes(text) + R"( is not a number; allowed are "NaN", "Infinity" and "-Infinity")");
    return bits;
}

template <class T>
std::string textOfBits(std::uint64_t bits) {
    if constexpr (std::is_same_v<T, bool>)
        return bits ? "true" : "false";
    else if constexpr (std::is_floating_point_v<T>)
        return textOfFloatElement<T>(static_cast<BitsOf<T>>(bits));
    else
        return written(static_cast<T>(bits));
}

[[noreturn]] void refuseNumber(std::string_view text) {
    throw Error(fmt::format("the number {} appears where true or false is expected", shortened(text)));
}

// A whole number that is not the float's value would be saved as another.
template <class Float>
Float exact(std::string_view text, Float value) {
    const bool isWhole = text.find_first_not_of("0123456789", text.starts_with('-') ? 1 : 0) == std::string_view::npos;
    if (!isWhole) return value;
    if (text == "-0") throw Error("the number -0 would be saved as -0.0; write -0.0, or 0 when no sign is meant");
    if (text.size() <= std::numeric_limits<Float>::digits10) return value;
    if (fmt::format("{:.0f}", value) == text || written(value) == text) return value;
    throw Error(
        fmt::format(R"(the number {0} would be saved as {1:.0f}; write it as {{"$class": "int64", "size": [1, 1], )"
                    R"("data": [{0}]}}, with "uint64" for a larger one, or as a text)",
                    shortened(text), value));
}

template <class T>
std::uint64_t bitsOfNumber(std::string_view text, const char* className) {
    if constexpr (std::is_same_v<T, bool>)
        refuseNumber(text);
    else if constexpr (std::is_floating_point_v<T>)
        return std::bit_cast<BitsOf<T>>(exact(text, parsed<T>(text, className)));
    else
        return static_cast<std::uint64_t>(parsed<T>(text, className));
}

}  // namespace

std::string textOfNumber(double value) { return textOfFloat(value); }

double numberOfText(std::string_view text) { return parsed<double>(text, "double"); }

double exactNumberOfText(std::string_view text) {
    // A few digits, as most numbers are.
    constexpr std::size_t kFew = std::numeric_limits<std::int32_t>::digits10;
    std::int32_t whole = 0;
    const char* const end = text.data() + text.size();
    if (text.size() <= kFew && text.front() != '-' && std::from_chars(text.data(), end, whole).ptr == end) return whole;
    return exact(text, numberOfText(text));
}

std::size_t lengthOfText(std::string_view text) { return parsed<std::size_t>(text, "length"); }

std::string textOfElement(hvClassID classId, std::uint64_t bits) {
    if (classId == hvCHAR_CLASS) return written(bits);
    std::string text;
    orvex::withElementType(classId, [&]<class T>(std::type_identity<T>) { text = textOfBits<T>(bits); });
    return text;
}

std::uint64_t elementOfNumber(hvClassID classId, std::string_view text) {
    if (classId == hvCHAR_CLASS) return parsed<std::uint16_t>(text, "UTF-16 code unit");
    std::uint64_t bits = 0;
    const bool isNumeric = orvex::withElementType(
        classId, [&]<class T>(std::type_identity<T>) { bits = bitsOfNumber<T>(text, nameOfClass(classId)); });
    if (!isNumeric) refuseNumber(text);
    return bits;
}

std::uint64_t elementOfText(hvClassID classId, std::string_view text) {
    if (classId == hvDOUBLE_CLASS) return floatOfText<double>(text);
    if (classId == hvSINGLE_CLASS) return floatOfText<float>(text);
    throw Error(fmt::format("the text {} appears where an element of the array is expected", inQuotes(text)));
}

std::size_t elementSize(hvClassID classId) noexcept {
    std::size_t size = classId == hvCHAR_CLASS ? sizeof(char16_t) : 0;
    orvex::withElementType(classId, [&]<class T>(std::type_identity<T>) { size = sizeof(T); });
    return size;
}

}  // namespace workbench
