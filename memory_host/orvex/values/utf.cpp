#include "memory_host/orvex/values/utf.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "host/unicode.h"

namespace orvex {
namespace {

struct Decoded {
    char32_t codePoint;
    std::size_t length;
};

// What a leading byte promises: how many bytes follow, and which values the next one may have.
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

// Decodes one character from a text that is not empty; an ill-formed one has the length of its
// maximal subpart.
Decoded decodeUtf8(std::string_view text) noexcept {
    const auto first = static_cast<std::uint8_t>(text[0]);
    if (first < 0x80) return {first, 1};
    const Lead lead = leadOf(first);
    if (lead.following == 0) return {ks_host::kReplacementCharacter, 1};
    char32_t codePoint = first & (0x3Fu >> lead.following);
    for (std::size_t i = 1; i <= lead.following; ++i) {
        const auto byte = i < text.size() ? static_cast<std::uint8_t>(text[i]) : std::uint8_t{0};
        if (byte < (i == 1 ? lead.least : 0x80) || byte > (i == 1 ? lead.most : 0xBF))
            return {ks_host::kReplacementCharacter, i};
        codePoint = codePoint << 6 | (byte & 0x3Fu);
    }
    return {codePoint, lead.following + 1};
}

Decoded decodeUtf16(std::u16string_view text) noexcept {
    std::size_t length = 0;
    const char32_t codePoint = ks_host::takeCharacter(text, length);
    return {codePoint, length};
}

void append(std::u16string& text, char32_t codePoint) { ks_host::appendUtf16(text, codePoint); }

void append(std::string& text, char32_t codePoint) {
    char bytes[ks_host::kMostUtf8Bytes];
    text.append(bytes, ks_host::putUtf8(bytes, codePoint));
}

// Looks at all units: such loops run over many of them at a time.
template <class Text>
bool isAsciiText(Text text) noexcept {
    using Unit = std::make_unsigned_t<typename Text::value_type>;
    Unit all = 0;
    for (const auto unit : text) all = static_cast<Unit>(all | static_cast<Unit>(unit));
    return all < 0x80;
}

// Unit by unit, many of them at a time; for ASCII only.
template <class Target, class Source>
Target copiedAs(Source text) {
    Target result(text.size(), 0);
    std::transform(text.begin(), text.end(), result.begin(),
                   [](auto unit) { return static_cast<typename Target::value_type>(unit); });
    return result;
}

template <class Target, class Source, class Decode>
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

std::u16string utf16Of(std::string_view text) {
    if (isAsciiText(text)) return copiedAs<std::u16string>(text);
    return transcoded<std::u16string>(text, decodeUtf8);
}

std::string utf8Of(std::u16string_view text) {
    if (isAsciiText(text)) return copiedAs<std::string>(text);
    return transcoded<std::string>(text, decodeUtf16);
}

}  // namespace orvex
