#pragma once

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <limits>

/// Numbers written to where there is room for them, as in the "C" locale, whatever the process's locale is. Each
/// function returns the end of what it wrote; it may use all of its room meanwhile.
namespace ks_hmi_foundation {

inline constexpr int kGeneralDigits = std::numeric_limits<double>::max_digits10;
inline constexpr int kFixedDecimals = 6;

inline constexpr std::size_t kMostIntBytes = 1 + std::numeric_limits<int>::digits10 + 1;
/// Sign, digits and point, and behind them the two words in which decimals are put down: more than an exponent takes.
inline constexpr std::size_t kMostGeneral17Bytes = 1 + kGeneralDigits + 1 + 2 * sizeof(std::uint64_t);
/// Sign, the whole part of the largest double, point, decimals.
inline constexpr std::size_t kMostFixed6Bytes =
    1 + std::numeric_limits<double>::max_exponent10 + 1 + 1 + kFixedDecimals;

/// In decimal.
inline char* putInt(char* to, int number) noexcept {
    if (number < 0 || number > 9) return std::to_chars(to, to + kMostIntBytes, number).ptr;
    *to = static_cast<char>('0' + number);
    return to + 1;
}
/// As "%.17g" writes it.
char* putGeneral17(char* to, double number) noexcept;
/// As "%f" writes it.
char* putFixed6(char* to, double number) noexcept;

}  // namespace ks_hmi_foundation
