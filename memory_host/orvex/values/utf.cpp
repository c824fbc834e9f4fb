#include "memory_host/orvex/values/utf.h"

#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace orvex {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

struct Decoded {
    char32_t codePoint;
    std::size_t length;
};

/// What a leading byte promises: how many bytes follow, and which values the next one may have.
struct Lead {
    std::size_t following = 0;
    std::uint8_t least = 0x80;
    std::uint8_t most = 0xBF;
};

// The narrower ranges leave out overlong forms, surrogates, and what lies beyond U+10FFFF.
Lead leadOf(std::uint8_t byte) noexcept {
    if (byte >= 0xC2 && byte <= 0xDF) return {.following = 1};
    if (byte == 0xE0) return {.following = 2, .least = 0xA0};
    if (byte == 0xED) return {.following = 2, .most = 0x9F};
    if (byte >= 0xE1 && byte <= 0xEF) return {.following = 2};
    if (byte == 0xF0) return {.following = 3, .least = 0x90};
    if (byte == 0xF4) return {.following = 3, .most = 0x8F};
    if (byte >= 0xF1 && byte <= 0xF3) return {.following = 3};
    return {};
}

/// Decodes one character from a text that is not empty; an ill-formed one has the length of its
/// maximal subpart.
Decoded decodeUtf8(std::string_view text) noexcept {
    const auto first = static_cast<std::uint8_t>(text[0]);
    if (first < 0x80) return {first, 1};
    const Lead lead = leadOf(first);
    if (lead.following == 0) return {kReplacement, 1};
    char32_t codePoint = first & (0x3Fu >> lead.following);
    for (std::size_t i = 1; i <= lead.following; ++i) {
        const auto byte = i < text.size() ? static_cast<std::uint8_t>(text[i]) : std::uint8_t{0};
        if (byte < (i == 1 ? lead.least : 0x80) || byte > (i == 1 ? lead.most : 0xBF)) return {kReplacement, i};
        codePoint = codePoint << 6 | (byte & 0x3Fu);
    }
    return {codePoint, lead.following + 1};
}

bool isHighSurrogate(char16_t unit) noexcept { return unit >= 0xD800 && unit <= 0xDBFF; }
bool isLowSurrogate(char16_t unit) noexcept { return unit >= 0xDC00 && unit <= 0xDFFF; }

Decoded decodeUtf16(std::u16string_view text) noexcept {
    const char16_t first = text[0];
    if (!isHighSurrogate(first)) return {isLowSurrogate(first) ? kReplacement : char32_t{first}, 1};
    if (text.size() < 2 || !isLowSurrogate(text[1])) return {kReplacement, 1};
    return {0x10000 + ((char32_t{first} - 0xD800) << 10) + (char32_t{text[1]} - 0xDC00), 2};
}

void append(std::u16string& text, char32_t codePoint) {
    if (codePoint < 0x10000) {
        text += static_cast<char16_t>(codePoint);
        return;
    }
    text += static_cast<char16_t>(0xD800 + ((codePoint - 0x10000) >> 10));
    text += static_cast<char16_t>(0xDC00 + ((codePoint - 0x10000) & 0x3FF));
}

void append(std::string& text, char32_t codePoint) {
    const auto tail = [&text, codePoint](int shift) { text += static_cast<char>(0x80 | (codePoint >> shift & 0x3F)); };
    if (codePoint < 0x80) {
        text += static_cast<char>(codePoint);
    } else if (codePoint < 0x800) {
        text += static_cast<char>(0xC0 | codePoint >> 6);
        tail(0);
    } else if (codePoint < 0x10000) {
        text += static_cast<char>(0xE0 | codePoint >> 12);
        tail(6), tail(0);
    } else {
        text += static_cast<char>(0xF0 | codePoint >> 18);
        tail(12), tail(6), tail(0);
    }
}

/// Looks at all units: such loops run over many of them at a time.
template <typename Text>
bool isAsciiText(Text text) noexcept {
    using Unit = std::make_unsigned_t<typename Text::value_type>;
    Unit all = 0;
    for (const auto unit : text) all = static_cast<Unit>(all | static_cast<Unit>(unit));
    return all < 0x80;
}

template <typename Target, typename Source, typename Decode>
Target transcoded(Source text, Decode decode) {
    Target result;
    result.reserve(text.size());
    while (!text.empty()) {
        const Decoded one = decode(text);
        append(result, one.codePoint);
        text.remove_prefix(one.length);
    }
    return result;
}

}  // namespace

bool isAscii(std::string_view text) noexcept { return isAsciiText(text); }

std::u16string utf16Of(std::string_view text) {
    if (isAscii(text)) return {text.begin(), text.end()};
    return transcoded<std::u16string>(text, decodeUtf8);
}

std::string utf8Of(std::u16string_view text) {
    if (isAsciiText(text)) return {text.begin(), text.end()};
    return transcoded<std::string>(text, decodeUtf16);
}

}  // namespace orvex
