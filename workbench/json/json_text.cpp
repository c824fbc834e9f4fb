#include "workbench/json/json_text.h"

#include <fmt/format.h>

#include <algorithm>

#include "workbench/text/text.h"

namespace workbench {

namespace {

constexpr char kFirstUnescaped = 0x20;

bool needsEscape(char c) noexcept { return c == '"' || c == '\\' || (c >= 0 && c < kFirstUnescaped); }

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

}  // namespace

void appendJsonText(std::string& out, std::string_view utf8) {
    out += '"';
    while (!utf8.empty()) {
        const auto plain = std::find_if(utf8.begin(), utf8.end(), needsEscape);
        out.append(utf8.begin(), plain);
        if (plain == utf8.end()) break;
        appendEscaped(out, *plain);
        utf8 = {plain + 1, utf8.end()};
    }
    out += '"';
}

void appendJsonText(std::string& out, std::u16string_view text) { appendJsonText(out, toUtf8(text)); }

}  // namespace workbench
