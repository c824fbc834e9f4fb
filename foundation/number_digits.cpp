#include "foundation/number_digits.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstring>

namespace ks_hmi_foundation {

namespace {

constexpr auto kPowersOf10 = [] {
    std::array<std::uint64_t, kGeneralDigits + 1> powers{1};
    for (std::size_t i = 1; i < powers.size(); ++i) powers[i] = 10 * powers[i - 1];
    return powers;
}();
constexpr int kWordDigits = 8;
constexpr std::uint64_t kWordLimit = kPowersOf10[kWordDigits];

// A fraction of that many bits has as many decimals, and two words hold them.
constexpr int kMostDecimals = 2 * kWordDigits;
// So many units of the last decimal is a 65536th.
constexpr std::uint64_t kDecimalUnitsPer65536th = kPowersOf10[kMostDecimals] >> kMostDecimals;

// The eight digits of a number below 10^8, the first one in the lowest byte: halves, then pairs, then single digits,
// all of a kind at once. A factor of 2^20 / 100 divides what is below 10^4 by 100, one of 2^10 / 10 what is below 100
// by 10, both rounded up.
std::uint64_t eightDigits(std::uint32_t number) {
    constexpr std::uint64_t kHundredth = (1U << 20U) / 100 + 1;
    constexpr std::uint64_t kTenth = (1U << 10U) / 10 + 1;
    const std::uint64_t halves = number / 10'000 | std::uint64_t{number % 10'000} << 32;
    const std::uint64_t upperPairs = ((halves * kHundredth) >> 20) & 0x0000'007F'0000'007F;
    const std::uint64_t pairs = upperPairs | (halves - 100 * upperPairs) << 16;
    const std::uint64_t upperDigits = ((pairs * kTenth) >> 10) & 0x000F'000F'000F'000F;
    return upperDigits | (pairs - 10 * upperDigits) << 8;
}

void putDigits(char* to, std::uint64_t digits) {
    digits |= 0x3030'3030'3030'3030;
    if constexpr (std::endian::native == std::endian::big) digits = __builtin_bswap64(digits);
    std::memcpy(to, &digits, sizeof digits);
}

// Not for 0, which has no first digit.
char* putWhole(char* to, std::uint64_t whole) {
    if (whole >= kWordLimit) return std::to_chars(to, to + kGeneralDigits, whole).ptr;
    const std::uint64_t digits = eightDigits(static_cast<std::uint32_t>(whole));
    const int zeros = std::countr_zero(digits) / 8;
    putDigits(to, digits >> (8 * zeros));
    return to + kWordDigits - zeros;
}

// The first ones of 16 decimals.
char* putDecimals(char* to, std::uint64_t sixteen, int decimals) {
    putDigits(to, eightDigits(static_cast<std::uint32_t>(sixteen / kWordLimit)));
    putDigits(to + kWordDigits, eightDigits(static_cast<std::uint32_t>(sixteen % kWordLimit)));
    return to + decimals;
}

// Of 16 decimals as many as there is room for, half of the last one to the even one, without zeros at the end. They
// amount neither to a whole nor to nothing: 17 digits tell every number from all others.
char* putRoundedDecimals(char* to, std::uint64_t sixteen, int room) {
    const std::uint64_t unit = kPowersOf10[static_cast<std::size_t>(kMostDecimals - room)];
    std::uint64_t rounded = sixteen / unit;
    const std::uint64_t rest = sixteen % unit;
    rounded += static_cast<std::uint64_t>(rest > unit / 2 || (rest == unit / 2 && rounded % 2 == 1));
    sixteen = rounded * unit;
    for (; rounded % 10 == 0; rounded /= 10) --room;
    return putDecimals(to, sixteen, room);
}

// Block handles are integers or dyadic fractions as a rule: their decimal expansion ends soon. Null for most other
// numbers. Writes up to 16 bytes beyond the point.
char* putExactDecimal(char* to, double number) {
    constexpr int kMantissaBits = std::numeric_limits<double>::digits - 1;
    constexpr int kBias = std::numeric_limits<double>::max_exponent - 1;
    constexpr int kMostBits = std::bit_width(kPowersOf10[kGeneralDigits]) - 1;
    const auto bits = std::bit_cast<std::uint64_t>(number);
    const int exponent = static_cast<int>((bits >> kMantissaBits) & 0x7FF);
    // Subnormal numbers and 0 have no such first bit, but more decimals than fit in any case.
    std::uint64_t mantissa = (bits & ((std::uint64_t{1} << kMantissaBits) - 1)) | (std::uint64_t{1} << kMantissaBits);
    const int zeros = std::countr_zero(mantissa);
    mantissa >>= zeros;
    const int shift = exponent - kBias - kMantissaBits + zeros;
    const int decimals = std::max(0, -shift);
    if (static_cast<int>(std::bit_width(mantissa)) + shift > kMostBits || decimals > kMostDecimals) return nullptr;
    const std::uint64_t whole = shift >= 0 ? mantissa << shift : mantissa >> decimals;
    if (whole == 0) return nullptr;
    if (std::signbit(number)) *to++ = '-';
    const char* const begin = to;
    to = putWhole(to, whole);
    if (decimals == 0) return to;
    const std::uint64_t in65536ths = (mantissa << (kMostDecimals - decimals)) & 0xFFFF;
    const std::uint64_t sixteen = in65536ths * kDecimalUnitsPer65536th;
    const int room = kGeneralDigits - static_cast<int>(to - begin);
    *to++ = '.';
    return decimals > room ? putRoundedDecimals(to, sixteen, room) : putDecimals(to, sixteen, decimals);
}

}  // namespace

char* putGeneral17(char* to, double number) noexcept {
    if (char* const end = putExactDecimal(to, number)) return end;
    return std::to_chars(to, to + kMostGeneral17Bytes, number, std::chars_format::general, kGeneralDigits).ptr;
}

char* putFixed6(char* to, double number) noexcept {
    return std::to_chars(to, to + kMostFixed6Bytes, number, std::chars_format::fixed, kFixedDecimals).ptr;
}

}  // namespace ks_hmi_foundation
