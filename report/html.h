#pragma once

#include <fmt/core.h>

#include <concepts>
#include <cstddef>
#include <string>
#include <string_view>
#include <type_traits>

#include "workbench/model_file/model_file.h"

/// How a page is put together: patterns from this program's source, and texts from anywhere that cannot become markup.
namespace report {

/// What is HTML already. Made of `Html`, or of what stands in the source.
struct Markup {
    std::string html;
};

/// A name that a file gives: shown in full up to some length, and its writing direction stays its own.
struct Name {
    explicit Name(std::string_view utf8) : text(utf8) {}
    explicit Name(std::u16string_view utf16);
    std::string text;
};

/// The same of a path: a line may end behind each part.
struct Path : Name {
    using Name::Name;
};

/// A message whose parts are printable already, as those of findings.
struct Message {
    std::string_view text;
};

/// The text with what a reader would not see or what would turn lines around written out, and `&<>"'` as references:
/// fit for the text of an element and for a quoted attribute.
std::string escaped(std::string_view text);
std::string escaped(std::u16string_view text);
/// "1,234,567".
std::string grouped(std::size_t number);
/// "1 sample", "2,000 samples".
std::string countedText(std::size_t count, std::string_view singular);

inline std::string_view shown(const Markup& markup) { return markup.html; }
std::string shown(const Name& name);
std::string shown(const Path& path);
std::string shown(const Message& message);
template <class Text>
requires std::convertible_to<const Text&, std::string_view> std::string shown(const Text& text) {
    return escaped(std::string_view(text));
}
template <class Text>
requires std::convertible_to<const Text&, std::u16string_view> std::string shown(const Text& text) {
    return escaped(std::u16string_view(text));
}
template <class Number>
requires(std::integral<Number> && !std::same_as<Number, bool> && !std::same_as<Number, char>) Number
    shown(Number number) {
    return number;
}

/// Collects HTML and hands it on piece by piece.
class Html {
public:
    /// Without a sink all is kept, for `take`.
    explicit Html(workbench::TextSink sink = {}) : m_sink(std::move(sink)) {}

    /// Appends the pattern, with each argument as `shown` has it: texts are escaped, whatever they hold.
    template <class... Args>
    Html& add(fmt::format_string<decltype(shown(std::declval<const Args&>()))...> pattern, const Args&... args) {
        append(pattern, fmt::make_format_args(shown(args)...));
        return *this;
    }
    /// Hands on what is left.
    void flush();
    Markup take() { return {std::move(m_text)}; }

private:
    void append(fmt::string_view pattern, fmt::format_args arguments);

    workbench::TextSink m_sink;
    std::string m_text;
};

}  // namespace report
