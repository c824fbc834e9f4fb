#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/// UTF-16 and UTF-8 taken apart and put together, one character at a time. Nothing here calls the host.
namespace ks_host {

/// Stands for what is ill-formed.
inline constexpr char32_t kReplacementCharacter = U'\uFFFD';

constexpr bool isHighSurrogate(char32_t unit) noexcept { return unit >= 0xD800 && unit < 0xDC00; }  ///< First of two.
constexpr bool isLowSurrogate(char32_t unit) noexcept { return unit >= 0xDC00 && unit < 0xE000; }   ///< Second of two.
constexpr bool isSurrogate(char32_t unit) noexcept { return unit >= 0xD800 && unit < 0xE000; }      ///< Either.

/// The character that starts at `at` (0-based, below the text's size), with `at` moved behind it. A surrogate without
/// its partner counts as a character, and is handed back as it is.
constexpr char32_t takeCodePoint(std::u16string_view text, std::size_t& at) noexcept {
    const char32_t unit = text[at++];
    if (!isHighSurrogate(unit) || at >= text.size() || !isLowSurrogate(text[at])) return unit;
    return 0x10000 + ((unit - 0xD800) << 10U) + (text[at++] - char32_t{0xDC00});
}

/// The same, with U+FFFD for a surrogate without its partner.
constexpr char32_t takeCharacter(std::u16string_view text, std::size_t& at) noexcept {
    const char32_t point = takeCodePoint(text, at);
    return isSurrogate(point) ? kReplacementCharacter : point;
}

/// Whether every surrogate has its partner.
constexpr bool isWellFormed(std::u16string_view text) noexcept {
    for (std::size_t at = 0; at < text.size();)
        if (isSurrogate(takeCodePoint(text, at))) return false;
    return true;
}

/// Bytes that `putUtf8` writes at most.
inline constexpr std::size_t kMostUtf8Bytes = 4;

/// Writes the character, which is no surrogate and at most U+10FFFF, and returns the end of what it wrote.
constexpr char* putUtf8(char* to, char32_t point) noexcept {
    const auto tail = [point](unsigned shift) { return static_cast<char>(0x80U | ((point >> shift) & 0x3FU)); };
    if (point < 0x80) {
        *to++ = static_cast<char>(point);
    } else if (point < 0x800) {
        *to++ = static_cast<char>(0xC0U | (point >> 6U));
        *to++ = tail(0);
    } else if (point < 0x10000) {
        *to++ = static_cast<char>(0xE0U | (point >> 12U));
        *to++ = tail(6);
        *to++ = tail(0);
    } else {
        *to++ = static_cast<char>(0xF0U | (point >> 18U));
        *to++ = tail(12);
        *to++ = tail(6);
        *to++ = tail(0);
    }
    return to;
}

/// Appends the character, which is at most U+10FFFF; a surrogate as it is.
inline void appendUtf16(std::u16string& text, char32_t point) {
    if (point >= 0x10000) {
        text += static_cast<char16_t>(0xD800 + ((point - 0x10000) >> 10U));
        point = 0xDC00 + ((point - 0x10000) & 0x3FFU);
    }
    text += static_cast<char16_t>(point);
}

}  // namespace ks_host
