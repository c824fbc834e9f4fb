#include "workbench/json/json_mistake.h"

#include <algorithm>
#include <cctype>

#include "workbench/text/text.h"

namespace workbench {

namespace json = boost::json;

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr const char* kHalfPair = "half of a surrogate pair in \\u escapes";

bool isAscii(char c) noexcept { return static_cast<unsigned char>(c) < 0x80; }

/// Whether the text ends with the escape of a first half, and perhaps with the backslash of another escape.
bool endsWithHalfPair(std::string_view text) {
    constexpr std::size_t kLength = 6;
    if (text.ends_with('\\')) text.remove_suffix(1);
    if (text.size() < kLength) return false;
    const std::string_view escape = text.substr(text.size() - kLength);
    const auto isHalf = [](char c) { return std::string_view("89abAB").find(c) != std::string_view::npos; };
    return escape.starts_with("\\u") && (escape[2] == 'd' || escape[2] == 'D') && isHalf(escape[3]);
}

/// Whether the text starts with a whole character: converting what is none replaces it.
bool startsWithCharacter(std::string_view text) {
    std::size_t length = 1;
    while (length < text.size() && (static_cast<unsigned char>(text[length]) & 0xC0U) == 0x80U) ++length;
    return toUtf8(toUtf16(text.substr(0, length))) == text.substr(0, length);
}

}  // namespace

std::string describeMistake(const json::error_code& code, std::string_view piece, std::size_t used) {
    if (code == json::error::incomplete) return "the document ends too early";
    if (code == json::error::illegal_leading_surrogate || code == json::error::illegal_trailing_surrogate)
        return kHalfPair;
    if (code != json::error::syntax) return code.message();
    const std::string_view rest = piece.substr(std::min(used, piece.size()));
    if (used == 0 && rest.starts_with(kByteOrderMark))
        return "the file starts with a byte order mark (save it without one)";
    if (endsWithHalfPair(piece.substr(0, used))) return kHalfPair;
    if (rest.empty() || isAscii(rest.front())) return code.message();
    return startsWithCharacter(rest) ? "there is a non-ASCII character outside a string" : "some bytes are not UTF-8";
}

}  // namespace workbench
