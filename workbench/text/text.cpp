#include "workbench/text/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <type_traits>

#include "host/text.h"
#include "host/values.h"
#include "workbench/text/columns.h"

namespace workbench {

namespace {

// In columns.
constexpr std::size_t kLongestQuoted = 120;

// Without looking for the first other one: texts are short, and a loop without an exit is fast.
bool isAscii(auto text) noexcept {
    unsigned units = 0;
    for (const auto unit : text) units |= static_cast<std::make_unsigned_t<decltype(unit)>>(unit);
    return units < 0x80;
}

std::size_t characterCount(std::string_view text) {
    return static_cast<std::size_t>(std::count_if(
        text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; }));
}

}  // namespace

std::u16string toUtf16(std::string_view text) {
    if (isAscii(text)) return {text.begin(), text.end()};
    return ks_host::textOf(ks_host::makeText(text).get());
}

std::string toUtf8(std::u16string_view text) {
    if (!isAscii(text)) return fl::i18n::to_string(std::u16string(text));
    std::string bytes(text.size(), '\0');
    std::transform(text.begin(), text.end(), bytes.begin(), [](char16_t unit) { return static_cast<char>(unit); });
    return bytes;
}

std::string inQuotes(std::string_view text) {
    const std::string whole = printable(text);
    std::string shown = shortened(whole, kLongestQuoted);
    if (shown.size() == whole.size()) return '"' + shown + '"';
    return fmt::format("\"{}\" ({} characters)", shown, characterCount(text));
}

std::string inQuotes(std::u16string_view text) { return inQuotes(toUtf8(text)); }

std::string counted(std::size_t count, std::string_view singular) {
    return fmt::format("{} {}{}", count, singular, count == 1 ? "" : "s");
}

std::string listed(const std::vector<std::string>& texts, std::size_t more) {
    const std::string list = fmt::format("{}", fmt::join(texts, ", "));
    return more > 0 ? fmt::format("{} and {} more", list, more) : list;
}

}  // namespace workbench
