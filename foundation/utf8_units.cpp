#include "foundation/utf8_units.h"

#include <bit>
#include <cstdint>
#include <cstring>

#include "host/unicode.h"

namespace ks_hmi_foundation {

namespace {

// Four units at a time, as long as they are ASCII.
char* putAscii(char* to, std::u16string_view text, std::size_t& at) noexcept {
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

}  // namespace

std::size_t mostUtf8Bytes(std::u16string_view text) noexcept {
    std::size_t length = 0;
    for (const char16_t unit : text) length += unit < 0x80 ? 1U : unit < 0x800 ? 2U : kMostUtf8BytesPerUnit;
    return length;
}

char* putUtf8(char* to, std::u16string_view text) noexcept {
    std::size_t at = 0;
    to = putAscii(to, text, at);
    while (at < text.size()) {
        if (text[at] < 0x80) {
            *to++ = static_cast<char>(text[at++]);
        } else {
            to = ks_host::putUtf8(to, ks_host::takeCharacter(text, at));
        }
    }
    return to;
}

}  // namespace ks_hmi_foundation
