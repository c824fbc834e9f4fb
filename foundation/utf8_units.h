#pragma once

#include <cstddef>
#include <string_view>

/// UTF-16 written in UTF-8 to where there is room for it.
namespace ks_hmi_foundation {

/// What a unit takes at most: a pair takes four bytes, and so less than two units alone.
inline constexpr std::size_t kMostUtf8BytesPerUnit = 3;

/// At least as many bytes as the text takes: halves of a pair count as what a lone one becomes.
std::size_t mostUtf8Bytes(std::u16string_view text) noexcept;

/// Writes at most `mostUtf8Bytes`, U+FFFD for a lone surrogate; returns the end.
char* putUtf8(char* to, std::u16string_view text) noexcept;

}  // namespace ks_hmi_foundation
