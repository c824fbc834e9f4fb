#include "workbench/json/json_text.h"

#include <fmt/format.h>

#include <algorithm>

#include "workbench/json/plain_text.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

constexpr char kFirstUnescaped = 0x20;

bool needsEscape(char c) noexcept { return (c == '"') | (c == '\\') | ((c >= 0) & (c < kFirstUnescaped)); }
// Whether UTF-8 has it as it is.
bool isPlain(char16_t unit) noexcept {
    return (unit < 0x80) & (unit >= kFirstUnescaped) & (unit != u'"') & (unit != u'\\');
}

void appendEscaped(std::string& out, char c) {
    if (c == '"' || c == '\\')
        out += {'\\', c};
    else if (c == '\n')
        out += "\\n";
    else if (c == '\t')
        out += "\\t";
    else
        out += fmt::format("\\u{:04x}", static_cast<int>(c));
}

void appendUnquoted(std::string& out, std::string_view utf8) {
    while (!utf8.empty()) {
        const auto plain = std::find_if(utf8.begin(), utf8.end(), needsEscape);
        out.append(utf8.begin(), plain);
        if (plain == utf8.end()) break;
        appendEscaped(out, *plain);
        utf8 = {plain + 1, utf8.end()};
    }
}

// The text in quotes, if all units of it may stand there as they are. Looks at all of them, whatever is found: such
// loops run over many units at a time.
template <class Text, class MayStand>
bool appendWhole(std::string& out, Text text, MayStand mayStand) {
    const std::size_t start = out.size();
    out.resize(start + text.size() + 2);
    char* to = out.data() + start;
    *to++ = '"';
    bool isOther = false;
    for (const auto unit : text) {
        isOther |= !mayStand(unit);
        *to++ = static_cast<char>(unit);
    }
    *to = '"';
    if (isOther) out.resize(start);
    return !isOther;
}

}  // namespace

void appendJsonText(std::string& out, std::string_view utf8) {
    if (appendWhole(out, utf8, [](char c) { return !needsEscape(c); })) return;
    out += '"';
    appendUnquoted(out, utf8);
    out += '"';
}

bool appendPlainJsonText(std::string& out, std::u16string_view text) { return appendWhole(out, text, isPlain); }

void appendJsonText(std::string& out, std::u16string_view text) {
    if (appendPlainJsonText(out, text)) return;
    out += '"';
    appendUnquoted(out, toUtf8(text));
    out += '"';
}

}  // namespace workbench
