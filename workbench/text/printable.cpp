#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <boost/locale/utf.hpp>
#include <iterator>

#include "workbench/text/text.h"

namespace workbench {

namespace {

struct Range {
    char32_t first;
    char32_t last;
};

// What a terminal does not show, obeys, or shows as the blank that it is not: controls, other blanks, marks of the
// writing direction, joiners and selectors of variants, fillers, private use, and what is no character.
constexpr auto kUnseen = std::to_array<Range>({
    {0x0, 0x1F},        {0x7F, 0xA0},       {0xAD, 0xAD},        {0x34F, 0x34F},     {0x61C, 0x61C},
    {0x115F, 0x1160},   {0x1680, 0x1680},   {0x17B4, 0x17B5},    {0x180B, 0x180F},   {0x2000, 0x200F},
    {0x2028, 0x202F},   {0x205F, 0x206F},   {0x2800, 0x2800},    {0x3000, 0x3000},   {0x3164, 0x3164},
    {0xD800, 0xF8FF},   {0xFDD0, 0xFDEF},   {0xFE00, 0xFE0F},    {0xFEFF, 0xFEFF},   {0xFFA0, 0xFFA0},
    {0xFFF0, 0xFFFB},   {0xFFFE, 0xFFFF},   {0x1BCA0, 0x1BCA3},  {0x1D173, 0x1D17A}, {0x1FFFE, 0x1FFFF},
    {0x2FFFE, 0x2FFFF}, {0x3FFFE, 0x3FFFF}, {0xE0000, 0x10FFFF},
});

constexpr bool isSeenAscii(char32_t character) noexcept { return (character >= 0x20) & (character < 0x7F); }

bool isUnseen(char32_t character) noexcept {
    if (isSeenAscii(character)) return false;
    const auto* const range = std::lower_bound(kUnseen.begin(), kUnseen.end(), character,
                                               [](const Range& one, char32_t wanted) { return one.last < wanted; });
    return range != kUnseen.end() && character >= range->first;
}

// Gives the first character of UTF-8, if there is one, to `take(character, bytes)`; bytes that are none come one by
// one.
template <class Take>
void takeCharacter(std::string_view& text, Take take) {
    using Utf = boost::locale::utf::utf_traits<char>;
    if (text.empty()) return;
    const char* end = text.data();
    const char32_t character = Utf::decode(end, text.data() + text.size());
    const bool isOne = character != boost::locale::utf::illegal && character != boost::locale::utf::incomplete;
    const std::size_t size = isOne ? static_cast<std::size_t>(end - text.data()) : 1;
    take(isOne ? character : static_cast<unsigned char>(text.front()), text.substr(0, size), isOne);
    text.remove_prefix(size);
}

template <class Take>
void forEachCharacter(std::string_view text, Take take) {
    while (!text.empty()) takeCharacter(text, take);
}

std::string escapeInText(char32_t character) {
    constexpr char32_t kLastOfTwoDigits = 0xFF;
    if (character == U'\n') return "\\n";
    if (character == U'\t') return "\\t";
    const auto number = static_cast<std::uint32_t>(character);
    return character <= kLastOfTwoDigits ? fmt::format("\\x{:02x}", number) : fmt::format("\\u{{{:x}}}", number);
}

std::string escapeInJson(char32_t character) {
    constexpr std::uint32_t kFirstPair = 0x10000;
    const auto number = static_cast<std::uint32_t>(character);
    if (number < kFirstPair) return fmt::format("\\u{:04x}", number);
    const std::uint32_t rest = number - kFirstPair;
    return fmt::format("\\u{:04x}\\u{:04x}", 0xD800U + (rest >> 10U), 0xDC00U + (rest & 0x3FFU));
}

// How many characters the text starts with that are ASCII and seen; many at a time, in a loop without an exit.
std::size_t seenLength(std::string_view text) noexcept {
    constexpr std::size_t kMany = 32;
    const auto areSeen = [](std::string_view many) {
        bool all = true;
        for (const char c : many) all &= isSeenAscii(static_cast<unsigned char>(c));
        return all;
    };
    std::size_t at = 0;
    while (text.size() - at >= kMany && areSeen({text.data() + at, kMany})) at += kMany;
    while (at < text.size() && isSeenAscii(static_cast<unsigned char>(text[at]))) ++at;
    return at;
}

template <class Escape>
std::string withoutUnseen(std::string_view text, Escape escape) {
    std::string result;
    result.reserve(text.size());
    while (!text.empty()) {
        const std::size_t seen = seenLength(text);
        result.append(text.substr(0, seen));
        text.remove_prefix(seen);
        takeCharacter(text, [&](char32_t character, std::string_view bytes, bool isOne) {
            if (isOne && !isUnseen(character))
                result += bytes;
            else
                result += escape(character);
        });
    }
    return result;
}

// Whether a backslash in front of it reads as the start of what `printable` writes.
bool readsAsEscape(char next) noexcept {
    return next == 'n' || next == 't' || next == 'x' || next == 'u' || next == '\\';
}

}  // namespace

std::string printableMessage(std::string_view message) { return withoutUnseen(message, escapeInText); }

std::string printable(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    bool isBackslashOwed = false;
    const auto append = [&](std::string_view shown) {
        if (isBackslashOwed) result += readsAsEscape(shown.front()) ? "\\\\" : "\\";
        isBackslashOwed = shown == "\\";
        if (!isBackslashOwed) result += shown;
    };
    forEachCharacter(text, [&](char32_t character, std::string_view bytes, bool isOne) {
        if (isOne && !isUnseen(character))
            append(bytes);
        else
            append(escapeInText(character));
    });
    return isBackslashOwed ? result + '\\' : result;
}

std::string printable(std::u16string_view text) { return printable(toUtf8(text)); }

std::string printableJson(std::string_view document) {
    return withoutUnseen(
        document, [](char32_t character) { return character == U'\n' ? std::string("\n") : escapeInJson(character); });
}

}  // namespace workbench
