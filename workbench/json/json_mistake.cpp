#include "workbench/json/json_mistake.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <initializer_list>

#include "workbench/text/text.h"

namespace workbench {

namespace json = boost::json;

namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr const char* kHalfPair = "half of a surrogate pair in \\u escapes";

bool isAscii(char c) noexcept { return static_cast<unsigned char>(c) < 0x80; }

// Whether the text ends with the escape of a first half, and perhaps with the backslash of another escape.
bool endsWithHalfPair(std::string_view text) {
    constexpr std::size_t kLength = 6;
    if (text.ends_with('\\')) text.remove_suffix(1);
    if (text.size() < kLength) return false;
    const std::string_view escape = text.substr(text.size() - kLength);
    const auto isHalf = [](char c) { return std::string_view("89abAB").find(c) != std::string_view::npos; };
    return escape.starts_with("\\u") && (escape[2] == 'd' || escape[2] == 'D') && isHalf(escape[3]);
}

// Whether the text starts with a whole character: converting what is none replaces it.
bool startsWithCharacter(std::string_view text) {
    std::size_t length = 1;
    while (length < text.size() && (static_cast<unsigned char>(text[length]) & 0xC0U) == 0x80U) ++length;
    return toUtf8(toUtf16(text.substr(0, length))) == text.substr(0, length);
}

bool isWordCharacter(char c) noexcept { return std::isalnum(static_cast<unsigned char>(c)) != 0; }
bool endsValue(char c) noexcept { return isWordCharacter(c) || c == '"' || c == '}' || c == ']'; }

// What is wrong inside a text.
std::string mistakeInText(std::string_view used, std::string_view rest) {
    if (used.ends_with('\\'))
        return R"(in a text, a backslash must be followed by one of "\/bfnrtu; write \\ for itself)";
    if (rest.starts_with('\t')) return R"(there is a tab in a text; write \t)";
    if (rest.starts_with('\n') || rest.starts_with('\r'))
        return R"(the line ends inside a text; close it with ", or write \n for a line break)";
    return R"(there is a control character in a text; write it as \u and four digits)";
}

// Words that other languages have.
std::string mistakeInWord(std::string_view used, std::string_view rest) {
    while (!used.empty() && isWordCharacter(used.back())) {
        rest = {used.data() + used.size() - 1, rest.size() + 1};
        used.remove_suffix(1);
    }
    const auto is = [&](std::initializer_list<std::string_view> words) {
        return std::any_of(words.begin(), words.end(), [&](std::string_view word) { return rest.starts_with(word); });
    };
    if (is({"NaN", "nan", "Infinity", "inf", "Inf"}))
        return R"(NaN and Infinity are not JSON numbers; write {"$class": "double", "size": [1, 1], "data": ["NaN"]})";
    if (is({"True", "False", "None", "TRUE", "FALSE", "NULL", "Null"}))
        return "write true, false and null in lower case";
    if (is({"0x", "0X"})) return "numbers must be decimal";
    if (rest.size() > 1 && rest.front() == '0' && std::isdigit(static_cast<unsigned char>(rest[1])) != 0)
        return "a number starts with a zero; leave it out";
    return "texts and keys need double quotes, which are missing here";
}

std::string mistakeAtBracket(char bracket, char before) {
    const std::string close = bracket == '}' ? R"("}")" : R"("]")";
    if (before == ',') return fmt::format("there is a comma before the {} (remove the comma)", close);
    if (before == ':') return "a value is missing after the colon";
    return close + " does not match the bracket that is open";
}

std::string mistakeAtSign(char sign, char before) {
    if (sign == '}' || sign == ']') return mistakeAtBracket(sign, before);
    if (sign == '/' || sign == '#') return "JSON has no comments (remove them)";
    if (sign == '\'') return "texts need double quotes, not single ones";
    if (sign == ',') return before == ',' ? "there are two commas" : "a value is missing before the comma";
    if (sign == '+' || sign == '.') return "numbers must start with a digit or a minus sign";
    if (sign == '=') return "a colon belongs between a key and its value";
    return "syntax error";
}

std::string mistakeBetween(const JsonStop& stop, std::string_view used, std::string_view rest) {
    const char before = lastCharacter(used, stop.before);
    const char sign = rest.front();
    const bool startsValue = isWordCharacter(sign) || std::string_view("\"{[-").find(sign) != std::string_view::npos;
    if (before == '"' && stop.isAfterKey && sign != '\'') return "a colon is missing after the key";
    const bool isApart = used.empty() || !isWordCharacter(used.back()) || !isWordCharacter(sign);
    if (startsValue && isApart && endsValue(before)) return "a comma is missing";
    const bool isInWord =
        !used.empty() && isWordCharacter(used.back()) && std::string_view(",/}]").find(sign) == std::string_view::npos;
    if (isWordCharacter(sign) || isInWord) return mistakeInWord(used, rest);
    return mistakeAtSign(sign, before);
}

std::string describeSyntax(const JsonStop& stop) {
    const std::string_view used = stop.piece.substr(0, std::min(stop.used, stop.piece.size()));
    const std::string_view rest = stop.piece.substr(used.size());
    if (used.empty() && rest.starts_with(kUtf8Mark))
        return "the file starts with a byte order mark (save it without one)";
    if (rest.starts_with("\xFF\xFE") || rest.starts_with("\xFE\xFF") || rest.starts_with('\0'))
        return "the file is in UTF-16 (save it in UTF-8)";
    if (endsWithHalfPair(used)) return kHalfPair;
    if (!rest.empty() && !isAscii(rest.front()))
        return startsWithCharacter(rest) ? "there is a non-ASCII character outside a string"
                                         : "some bytes are not UTF-8";
    if (rest.empty()) return "syntax error";
    return endsInText(used, stop.isInText) ? mistakeInText(used, rest) : mistakeBetween(stop, used, rest);
}

}  // namespace

char lastCharacter(std::string_view text, char before) noexcept {
    const std::size_t at = text.find_last_not_of(" \t\r\n");
    return at == std::string_view::npos ? before : text[at];
}

bool endsInText(std::string_view text, bool isInText) noexcept {
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '"')
            isInText = !isInText;
        else if (isInText && text[i] == '\\')
            ++i;
    }
    return isInText;
}

std::string describeMistake(const json::error_code& code, const JsonStop& stop) {
    if (code == json::error::incomplete && stop.before == 0) return "there is nothing in it";
    if (code == json::error::incomplete)
        return stop.isInText ? "the document ends inside a text" : "the document ends too early";
    if (code == json::error::illegal_leading_surrogate || code == json::error::illegal_trailing_surrogate)
        return kHalfPair;
    if (code == json::error::expected_hex_digit) return R"(\u in a text needs four hexadecimal digits)";
    return code == json::error::syntax ? describeSyntax(stop) : code.message();
}

}  // namespace workbench
