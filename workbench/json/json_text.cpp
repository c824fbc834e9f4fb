#include "workbench/json/json_text.h"

#include <fmt/format.h>

#include <algorithm>

#include "workbench/text/text.h"

namespace workbench {

namespace {

constexpr char kFirstUnescaped = 0x20;

bool needsEscape(char c) noexcept { return c == '"' || c == '\\' || (c >= 0 && c < kFirstUnescaped); }
// Whether UTF-8 has it as it is.
bool isPlain(char16_t unit) noexcept { return unit < 0x80 && unit >= kFirstUnescaped && unit != u'"' && unit != u'\\'; }

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

}  // namespace

void appendJsonText(std::string& out, std::string_view utf8) {
    out += '"';
    appendUnquoted(out, utf8);
    out += '"';
}

void appendJsonText(std::string& out, std::u16string_view text) {
    out += '"';
    const auto plain = std::find_if_not(text.begin(), text.end(), isPlain);
    const std::size_t start = out.size();
    out.resize(start + static_cast<std::size_t>(plain - text.begin()));
    std::transform(text.begin(), plain, out.begin() + static_cast<std::ptrdiff_t>(start),
                   [](char16_t unit) { return static_cast<char>(unit); });
    if (plain != text.end()) appendUnquoted(out, toUtf8(std::u16string_view(plain, text.end())));
    out += '"';
}

}  // namespace workbench
