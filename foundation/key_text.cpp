#include "foundation/key_text.h"

#include <algorithm>
#include <array>
#include <bit>
#include <boost/container_hash/hash.hpp>
#include <charconv>
#include <cmath>
#include <cstring>

#include "foundation/text_hash.h"

namespace ks_hmi_foundation {

namespace {

constexpr std::size_t kLongestInt = 1 + 10;
// Sign, 17 digits and a point, exponent.
constexpr std::size_t kLongestGeneral = 1 + 18 + 5;
// The largest double: sign, 309 digits, point, 6 decimals.
constexpr std::size_t kLongestFixed = 1 + 309 + 1 + 6;

constexpr std::size_t kMostBytesPerUnit = 3;

// At least as many bytes as the text takes: halves of a pair count as what a lone one becomes.
std::size_t utf8Bound(std::u16string_view text) {
    std::size_t length = 0;
    for (const char16_t unit : text) {
        length += unit < 0x80 ? 1U : unit < 0x800 ? 2U : kMostBytesPerUnit;
    }
    return length;
}

char32_t takeCodePoint(std::u16string_view text, std::size_t& at) {
    const char16_t unit = text[at++];
    if (isHighSurrogate(unit) && at < text.size() && isLowSurrogate(text[at])) {
        return 0x10000 + ((char32_t{unit} - 0xD800) << 10) + (text[at++] - char32_t{0xDC00});
    }
    return isHighSurrogate(unit) || isLowSurrogate(unit) ? U'\uFFFD' : char32_t{unit};
}

char* putUtf8(char* to, char32_t point) {
    const auto continuation = [&](int shift) { return static_cast<char>(0x80 | ((point >> shift) & 0x3F)); };
    if (point < 0x800) {
        *to++ = static_cast<char>(0xC0 | (point >> 6));
        *to++ = continuation(0);
    } else if (point < 0x10000) {
        *to++ = static_cast<char>(0xE0 | (point >> 12));
        *to++ = continuation(6);
        *to++ = continuation(0);
    } else {
        *to++ = static_cast<char>(0xF0 | (point >> 18));
        *to++ = continuation(12);
        *to++ = continuation(6);
        *to++ = continuation(0);
    }
    return to;
}

constexpr int kSignificantDigits = 17;
constexpr std::uint64_t kLeastTooLong = 100'000'000'000'000'000;  // 10^17

constexpr auto kPowersOf5 = [] {
    std::array<std::uint64_t, kSignificantDigits> powers{1};
    for (std::size_t i = 1; i < powers.size(); ++i) powers[i] = 5 * powers[i - 1];
    return powers;
}();

char* putFraction(char* to, std::uint64_t fraction, int digits) {
    for (int i = digits - 1; i >= 0; --i, fraction /= 10) to[i] = static_cast<char>('0' + fraction % 10);
    return to + digits;
}

// Block handles are integers or dyadic fractions as a rule: their decimal expansion ends within 17 digits and needs
// no rounding. Null for every other number.
char* putExactDecimal(char* to, double number) {
    constexpr int kMantissaBits = 52;
    const auto bits = std::bit_cast<std::uint64_t>(number);
    const int exponent = static_cast<int>((bits >> kMantissaBits) & 0x7FF);
    if (exponent == 0) return nullptr;
    std::uint64_t mantissa = (bits & ((std::uint64_t{1} << kMantissaBits) - 1)) | (std::uint64_t{1} << kMantissaBits);
    const int zeros = std::countr_zero(mantissa);
    mantissa >>= zeros;
    const int shift = exponent - 1075 + zeros;
    const int width = static_cast<int>(std::bit_width(mantissa));
    const int decimals = std::max(0, -shift);
    if (width + shift > 56 || decimals >= kSignificantDigits) return nullptr;
    // With that many decimals the product fits 64 bits when the mantissa has at most 26.
    if (decimals > 0 && width > 26) return nullptr;
    const std::uint64_t digits =
        shift >= 0 ? mantissa << shift : mantissa * kPowersOf5[static_cast<std::size_t>(decimals)];
    std::uint64_t scale = kPowersOf5[static_cast<std::size_t>(decimals)] << decimals;
    if (digits >= kLeastTooLong || digits < scale) return nullptr;
    if (std::signbit(number)) *to++ = '-';
    to = std::to_chars(to, to + kSignificantDigits, digits / scale).ptr;
    if (decimals == 0) return to;
    *to++ = '.';
    return putFraction(to, digits % scale, decimals);
}

}  // namespace

KeyText& KeyText::add(std::string_view utf8) {
    if (utf8.empty()) return *this;
    std::memcpy(reserve(utf8.size()), utf8.data(), utf8.size());
    m_size += utf8.size();
    return *this;
}

KeyText& KeyText::add(std::u16string_view text) {
    const bool fitsInAnyCase = kMostBytesPerUnit * text.size() <= m_capacity - m_size;
    char* to = reserve(fitsInAnyCase ? 0 : utf8Bound(text));
    for (std::size_t at = 0; at < text.size();) {
        if (text[at] < 0x80) {
            *to++ = static_cast<char>(text[at++]);
        } else {
            to = putUtf8(to, takeCodePoint(text, at));
        }
    }
    advanceTo(to);
    return *this;
}

KeyText& KeyText::add(int number) {
    char* const to = reserve(kLongestInt);
    advanceTo(std::to_chars(to, to + kLongestInt, number).ptr);
    return *this;
}

KeyText& KeyText::addGeneral17(double number) {
    char* const to = reserve(kLongestGeneral);
    const char* end = putExactDecimal(to, number);
    if (end == nullptr) {
        end = std::to_chars(to, to + kLongestGeneral, number, std::chars_format::general, kSignificantDigits).ptr;
    }
    advanceTo(end);
    return *this;
}

KeyText& KeyText::addFixed6(double number) {
    char* const to = reserve(kLongestFixed);
    advanceTo(std::to_chars(to, to + kLongestFixed, number, std::chars_format::fixed, 6).ptr);
    return *this;
}

std::uint64_t KeyText::hash() const noexcept { return boost::hash<std::string_view>()(text()); }

std::uint64_t KeyText::lookupHash() const noexcept { return TextHash().add(text()).value(); }

char* KeyText::reserve(std::size_t more) {
    if (m_capacity - m_size < more) {
        const std::size_t capacity = std::max(2 * m_capacity, m_size + more);
        auto larger = std::make_unique_for_overwrite<char[]>(capacity);
        std::memcpy(larger.get(), m_begin, m_size);
        m_heap = std::move(larger);
        m_begin = m_heap.get();
        m_capacity = capacity;
    }
    return m_begin + m_size;
}

}  // namespace ks_hmi_foundation
