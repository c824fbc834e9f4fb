#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// Texts of the tool: UTF-8 outside, UTF-16 towards the host.
namespace workbench {

/// UTF-8 to UTF-16, NULs included; ill-formed sequences become U+FFFD.
std::u16string toUtf16(std::string_view text);
std::string toUtf8(std::u16string_view text);

/// The text with what a terminal does not show or obeys escaped: "\n", "\t", "\xHH", "\u{H...}". A backslash that would
/// read as the start of such an escape is doubled, so that different texts look different.
std::string printable(std::string_view text);
std::string printable(std::u16string_view text);
/// The same of a message whose parts are printable, so that its backslashes stay.
std::string printableMessage(std::string_view message);
/// A JSON document in which those characters are escaped as JSON does it.
std::string printableJson(std::string_view document);
/// As `printable`, in double quotes; of a long text only its ends, with the number of its characters, so that a message
/// stays readable.
std::string inQuotes(std::string_view text);
std::string inQuotes(std::u16string_view text);

/// "1 signal", "2 signals".
std::string counted(std::size_t count, std::string_view singular);

/// "a, b"; with more, "a, b and 3 more".
std::string listed(const std::vector<std::string>& texts, std::size_t more = 0);
/// What `textOf` says of the first `most` of a list, and how many more there are.
template <class List, class TextOf>
std::string listed(const List& list, std::size_t most, TextOf textOf) {
    std::vector<std::string> texts;
    for (const auto& one : list) {
        if (texts.size() == most) break;
        texts.emplace_back(textOf(one));
    }
    return listed(texts, list.size() - texts.size());
}

}  // namespace workbench
