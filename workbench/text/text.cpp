#include "workbench/text/text.h"

#include <fmt/format.h>

#include <algorithm>

#include "host/text.h"
#include "host/values.h"

namespace workbench {

namespace {

constexpr unsigned char kDelete = 0x7F;
constexpr unsigned char kFirstVisible = 0x20;

// In bytes.
constexpr std::size_t kLongestQuoted = 400;
constexpr std::size_t kQuotedHead = 200;
constexpr std::size_t kQuotedTail = 60;

/// Whether the two bytes are one of the control characters U+0080 to U+009F.
bool isHighControl(unsigned char first, unsigned char second) noexcept { return first == 0xC2 && second < 0xA0; }

std::string escapeInText(unsigned char control) {
    if (control == '\n') return "\\n";
    if (control == '\t') return "\\t";
    return fmt::format("\\x{:02x}", control);
}

/// The lines of a document stay.
std::string escapeInJson(unsigned char control) { return control == '\n' ? "\n" : fmt::format("\\u{:04x}", control); }

template <typename Escape>
std::string withoutControls(std::string_view text, Escape escape) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const auto next = static_cast<unsigned char>(i + 1 < text.size() ? text[i + 1] : 0xFF);
        if (byte < kFirstVisible || byte == kDelete)
            result += escape(byte);
        else if (isHighControl(byte, next))
            result += escape(static_cast<unsigned char>(text[++i]));
        else
            result += text[i];
    }
    return result;
}

}  // namespace

std::u16string toUtf16(std::string_view text) { return ks_host::textOf(ks_host::makeText(text).get()); }

std::string toUtf8(std::u16string_view text) { return fl::i18n::to_string(std::u16string(text)); }

std::string printable(std::string_view text) { return withoutControls(text, escapeInText); }
std::string printable(std::u16string_view text) { return printable(toUtf8(text)); }
std::string printableJson(std::string_view document) { return withoutControls(document, escapeInJson); }

std::string inQuotes(std::string_view text) {
    if (text.size() <= kLongestQuoted) return '"' + printable(text) + '"';
    const auto isInside = [&](std::size_t at) { return (static_cast<unsigned char>(text[at]) & 0xC0U) == 0x80U; };
    std::size_t head = kQuotedHead;
    while (isInside(head)) --head;
    std::size_t tail = text.size() - kQuotedTail;
    while (tail < text.size() && isInside(tail)) ++tail;
    std::size_t characters = 0;
    for (std::size_t at = 0; at < text.size(); ++at) characters += isInside(at) ? 0U : 1U;
    return fmt::format("\"{}...{}\" ({} characters)", printable(text.substr(0, head)), printable(text.substr(tail)),
                       characters);
}

std::string inQuotes(std::u16string_view text) { return inQuotes(toUtf8(text)); }

std::string counted(std::size_t count, std::string_view singular) {
    return fmt::format("{} {}{}", count, singular, count == 1 ? "" : "s");
}

}  // namespace workbench
