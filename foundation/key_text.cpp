#include "foundation/key_text.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>

#include "host/unicode.h"

namespace ks_hmi_foundation {

namespace {

constexpr std::size_t kLongestInt = 1 + 10;
// Sign, 17 digits and a point, exponent.
constexpr std::size_t kLongestGeneral = 1 + 18 + 5;
// Digits are put down eight at a time.
constexpr std::size_t kSlack = 16;
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

// Four units at a time, as long as they are ASCII.
char* putAscii(char* to, std::u16string_view text, std::size_t& at) {
    if constexpr (std::endian::native == std::endian::big) return to;
    for (; at + 4 <= text.size(); at += 4, to += 4) {
        std::uint64_t units = 0;
        std::memcpy(&units, text.data() + at, sizeof units);
        if ((units & 0xFF80'FF80'FF80'FF80) != 0) break;
        units = (units | units >> 8) & 0x0000'FFFF'0000'FFFF;
        const auto bytes = static_cast<std::uint32_t>(units | units >> 16);
        std::memcpy(to, &bytes, sizeof bytes);
    }
    return to;
}

constexpr int kSignificantDigits = 17;
constexpr int kMostDecimals = 16;
constexpr std::uint64_t k5To16 = 152'587'890'625;
constexpr std::uint32_t k10To8 = 100'000'000;

constexpr auto kPowersOf10 = [] {
    std::array<std::uint64_t, kSignificantDigits + 1> powers{1};
    for (std::size_t i = 1; i < powers.size(); ++i) powers[i] = 10 * powers[i - 1];
    return powers;
}();

// The eight digits of a number below 10^8, the first one in the lowest byte: halves, then pairs, then single digits,
// all of a kind at once.
std::uint64_t eightDigits(std::uint32_t number) {
    const std::uint64_t halves = number / 10'000 | std::uint64_t{number % 10'000} << 32;
    const std::uint64_t upperPairs = ((halves * 10'486) >> 20) & 0x0000'007F'0000'007F;
    const std::uint64_t pairs = upperPairs | (halves - 100 * upperPairs) << 16;
    const std::uint64_t upperDigits = ((pairs * 103) >> 10) & 0x000F'000F'000F'000F;
    return upperDigits | (pairs - 10 * upperDigits) << 8;
}

void putDigits(char* to, std::uint64_t digits) {
    digits |= 0x3030'3030'3030'3030;
    if constexpr (std::endian::native == std::endian::big) digits = __builtin_bswap64(digits);
    std::memcpy(to, &digits, sizeof digits);
}

char* putWhole(char* to, std::uint64_t whole) {
    if (whole >= k10To8) return std::to_chars(to, to + kSignificantDigits, whole).ptr;
    constexpr int kMostLeadingZeros = 7;
    const std::uint64_t digits = eightDigits(static_cast<std::uint32_t>(whole));
    const int zeros = std::min(std::countr_zero(digits) / 8, kMostLeadingZeros);
    putDigits(to, digits >> (8 * zeros));
    return to + 8 - zeros;
}

// The first digits of that many 65536ths, which have 16 decimals.
char* putFraction(char* to, std::uint64_t in65536ths, int decimals) {
    const std::uint64_t digits = in65536ths * k5To16;
    putDigits(to, eightDigits(static_cast<std::uint32_t>(digits / k10To8)));
    putDigits(to + 8, eightDigits(static_cast<std::uint32_t>(digits % k10To8)));
    return to + decimals;
}

// Block handles are integers or dyadic fractions as a rule: their decimal expansion ends within 17 digits and needs
// no rounding. Null for every other number. Writes up to 8 bytes beyond the end.
char* putExactDecimal(char* to, double number) {
    constexpr int kMantissaBits = 52;
    constexpr int kMostBits = 56;  // 2^56 has 17 digits
    const auto bits = std::bit_cast<std::uint64_t>(number);
    const int exponent = static_cast<int>((bits >> kMantissaBits) & 0x7FF);
    if (exponent == 0) return nullptr;
    std::uint64_t mantissa = (bits & ((std::uint64_t{1} << kMantissaBits) - 1)) | (std::uint64_t{1} << kMantissaBits);
    const int zeros = std::countr_zero(mantissa);
    mantissa >>= zeros;
    const int shift = exponent - 1075 + zeros;
    const int decimals = std::max(0, -shift);
    if (static_cast<int>(std::bit_width(mantissa)) + shift > kMostBits || decimals > kMostDecimals) return nullptr;
    const std::uint64_t whole = shift >= 0 ? mantissa << shift : mantissa >> decimals;
    if (whole == 0 || whole >= kPowersOf10[static_cast<std::size_t>(kSignificantDigits - decimals)]) return nullptr;
    if (std::signbit(number)) *to++ = '-';
    to = putWhole(to, whole);
    if (decimals == 0) return to;
    *to++ = '.';
    return putFraction(to, (mantissa << (kMostDecimals - decimals)) & 0xFFFF, decimals);
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
    std::size_t at = 0;
    to = putAscii(to, text, at);
    while (at < text.size()) {
        if (text[at] < 0x80) {
            *to++ = static_cast<char>(text[at++]);
        } else {
            to = ks_host::putUtf8(to, ks_host::takeCharacter(text, at));
        }
    }
    advanceTo(to);
    return *this;
}

KeyText& KeyText::addLongNumber(int number) {
    char* const to = reserve(kLongestInt);
    advanceTo(std::to_chars(to, to + kLongestInt, number).ptr);
    return *this;
}

KeyText& KeyText::addGeneral17(double number) {
    char* const to = reserve(kLongestGeneral + kSlack);
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

void KeyText::grow(std::size_t more) {
    const std::size_t capacity = std::max(2 * m_capacity, m_size + more);
    auto larger = std::make_unique_for_overwrite<char[]>(capacity);
    std::memcpy(larger.get(), m_begin, m_size);
    m_heap = std::move(larger);
    m_begin = m_heap.get();
    m_capacity = capacity;
}

}  // namespace ks_hmi_foundation
