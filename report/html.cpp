#include "report/html.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

#include "workbench/text/columns.h"
#include "workbench/text/text.h"

namespace report {

namespace {

// In columns. What is longer says nothing more to a reader.
constexpr std::size_t kLongestName = 240;

constexpr std::size_t kPiece = std::size_t{1} << 16U;

std::string asReferences(std::string_view text, bool isPath = false) {
    std::string html;
    html.reserve(text.size());
    for (const char c : text) {
        switch (c) {
            case '&':
                html += "&amp;";
                break;
            case '<':
                html += "&lt;";
                break;
            case '>':
                html += "&gt;";
                break;
            case '"':
                html += "&quot;";
                break;
            case '\'':
                html += "&#39;";
                break;
            case '/':
                html += isPath ? "/<wbr>" : "/";
                break;
            default:
                html += c;
        }
    }
    return html;
}

std::string shortName(const Name& name) {
    return workbench::shortened(workbench::printable(std::string_view(name.text)), kLongestName);
}

// ASCII has the page's direction.
std::string isolated(std::string html) {
    const bool isAscii = std::ranges::all_of(html, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
    return isAscii ? html : fmt::format("<bdi>{}</bdi>", html);
}

}  // namespace

Name::Name(std::u16string_view utf16) : text(workbench::toUtf8(utf16)) {}

std::string escaped(std::string_view text) { return asReferences(workbench::printable(text)); }
std::string escaped(std::u16string_view text) { return asReferences(workbench::printable(text)); }

std::string grouped(std::size_t number) {
    std::string digits = std::to_string(number);
    for (std::size_t at = digits.size(); at > 3; at -= 3) digits.insert(at - 3, ",");
    return digits;
}

std::string countedText(std::size_t count, std::string_view singular) {
    return fmt::format("{} {}{}", grouped(count), singular, count == 1 ? "" : "s");
}

std::string shown(const Name& name) { return isolated(asReferences(shortName(name))); }
std::string shown(const Path& path) { return isolated(asReferences(shortName(path), true)); }

std::string shown(const Message& message) { return asReferences(workbench::printableMessage(message.text)); }

void Html::append(fmt::string_view pattern, fmt::format_args arguments) {
    fmt::vformat_to(std::back_inserter(m_text), pattern, arguments);
    if (m_text.size() >= kPiece && m_sink) flush();
}

void Html::flush() {
    if (m_sink) m_sink(m_text);
    m_text.clear();
}

}  // namespace report
