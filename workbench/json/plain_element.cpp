#include "workbench/json/plain_element.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

#include "workbench/json/json_file.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

constexpr int kDeepest = 8;

enum class Sign : std::uint8_t { plain, quote, foreign, other };

// What may stand in a text as it is, what ends it, what may be part of a character.
constexpr auto kSigns = [] {
    std::array<Sign, 256> signs{};
    for (std::size_t i = 0; i < signs.size(); ++i)
        signs.at(i) = i >= 0x80 ? Sign::foreign : i < 0x20 || i == '\\' ? Sign::other : Sign::plain;
    signs['"'] = Sign::quote;
    return signs;
}();

Sign signOf(char c) noexcept { return kSigns[static_cast<unsigned char>(c)]; }

// How many characters the text starts with that are plain. Eight at a time: a byte of `others` has its high bit when
// the character has it, is below a blank, a quote or a backslash; and perhaps when one in front of it has.
std::size_t plainLength(std::string_view text) noexcept {
    constexpr std::uint64_t kOnes = 0x0101010101010101U;
    std::size_t at = 0;
    for (std::uint64_t eight = 0; text.size() - at >= sizeof eight; at += sizeof eight) {
        std::memcpy(&eight, text.data() + at, sizeof eight);
        const auto zeros = [](std::uint64_t bytes) { return (bytes - kOnes) & ~bytes; };
        const std::uint64_t low = (eight - kOnes * 0x20U) & ~eight;
        const std::uint64_t others =
            (eight | low | zeros(eight ^ (kOnes * '"')) | zeros(eight ^ (kOnes * '\\'))) & (kOnes * 0x80U);
        if (others == 0) continue;
        if constexpr (std::endian::native == std::endian::little)
            return at + static_cast<std::size_t>(std::countr_zero(others)) / 8;
        break;
    }
    while (at < text.size() && signOf(text[at]) == Sign::plain) ++at;
    return at;
}

bool isDigit(char c) noexcept { return c >= '0' && c <= '9'; }
bool isUtf8(std::string_view text) { return toUtf8(toUtf16(text)) == text; }

}  // namespace

std::optional<std::string_view> plainText(std::string_view json) {
    if (json.empty() || json.front() != '"') return std::nullopt;
    std::size_t at = 1 + plainLength(json.substr(1));
    bool isForeign = false;
    while (at < json.size() && signOf(json[at]) == Sign::foreign) {
        isForeign = true;
        ++at;
        at += plainLength(json.substr(at));
    }
    if (at == json.size() || json[at] != '"') return std::nullopt;
    const std::string_view text = json.substr(1, at - 1);
    return isForeign && !isUtf8(text) ? std::nullopt : std::optional(text);
}

bool PlainElement::scan(std::string_view text) {
    m_tokens.clear();
    m_lines = 0;
    m_rest = text;
    skipBlanks();
    if (!value(0)) return false;
    skipBlanks();
    if (!take(',') || !take('\n')) return false;
    ++m_lines;
    m_size = text.size() - m_rest.size();
    return true;
}

bool PlainElement::take(char c) noexcept {
    if (m_rest.empty() || m_rest.front() != c) return false;
    m_rest.remove_prefix(1);
    return true;
}

void PlainElement::skipBlanks() noexcept {
    const auto isBlank = [](char c) { return c == ' ' || c == '\n' || c == '\t' || c == '\r'; };
    const char* at = m_rest.data();
    const char* const end = at + m_rest.size();
    if (at != end && *at > ' ') return;
    for (; at != end && isBlank(*at); ++at) m_lines += *at == '\n' ? 1U : 0U;
    m_rest = {at, end};
}

void PlainElement::add(Kind kind, std::string_view text) {
    m_tokens.push_back({kind, m_lines, text});
    m_lines = 0;
}

bool PlainElement::value(int depth) {
    if (m_rest.empty() || depth > kDeepest) return false;
    switch (m_rest.front()) {
        case '"':
            return quoted(Kind::text);
        case '{':
            return object(depth);
        case '[':
            return array(depth);
        case 't':
            return word("true", Kind::yes);
        case 'f':
            return word("false", Kind::no);
        case 'n':
            return word("null", Kind::null);
        default:
            return number();
    }
}

bool PlainElement::object(int depth) {
    add(Kind::beginObject);
    m_rest.remove_prefix(1);
    skipBlanks();
    if (!take('}')) {
        if (!member(depth)) return false;
        while (take(','))
            if (!member(depth)) return false;
        if (!take('}')) return false;
    }
    add(Kind::endObject);
    return true;
}

bool PlainElement::member(int depth) {
    skipBlanks();
    if (!quoted(Kind::key)) return false;
    skipBlanks();
    if (!take(':')) return false;
    skipBlanks();
    if (!value(depth + 1)) return false;
    skipBlanks();
    return true;
}

bool PlainElement::array(int depth) {
    add(Kind::beginArray);
    m_rest.remove_prefix(1);
    skipBlanks();
    if (!take(']')) {
        do {
            skipBlanks();
            if (!value(depth + 1)) return false;
            skipBlanks();
        } while (take(','));
        if (!take(']')) return false;
    }
    add(Kind::endArray);
    return true;
}

bool PlainElement::quoted(Kind kind) {
    const std::optional<std::string_view> text = plainText(m_rest);
    if (!text) return false;
    add(kind, *text);
    m_rest.remove_prefix(text->size() + 2);
    return true;
}

// A whole number that every integer type has.
bool PlainElement::number() {
    constexpr std::size_t kMostDigits = 18;
    const std::size_t start = m_rest.front() == '-' ? 1 : 0;
    std::size_t end = start;
    while (end < m_rest.size() && isDigit(m_rest[end])) ++end;
    const std::size_t digits = end - start;
    if (digits == 0 || digits > kMostDigits || end == m_rest.size()) return false;
    if (m_rest[start] == '0' && digits > 1) return false;
    if (std::string_view(" \t\r\n,]}").find(m_rest[end]) == std::string_view::npos) return false;
    add(Kind::number, m_rest.substr(0, end));
    m_rest.remove_prefix(end);
    return true;
}

bool PlainElement::word(std::string_view word, Kind kind) {
    if (!m_rest.starts_with(word)) return false;
    add(kind);
    m_rest.remove_prefix(word.size());
    return true;
}

void PlainElement::tell(JsonSink& sink, std::size_t& line) const {
    for (const Token& token : m_tokens) {
        line += token.linesBefore;
        switch (token.kind) {
            case Kind::beginObject:
                sink.beginObject();
                break;
            case Kind::key:
                sink.key(token.text);
                break;
            case Kind::endObject:
                sink.endObject();
                break;
            case Kind::beginArray:
                sink.beginArray();
                break;
            case Kind::endArray:
                sink.endArray();
                break;
            case Kind::text:
                sink.string(token.text);
                break;
            case Kind::number:
                sink.number(token.text);
                break;
            case Kind::null:
                sink.null();
                break;
            default:
                sink.boolean(token.kind == Kind::yes);
        }
    }
    line += m_lines;
}

}  // namespace workbench
