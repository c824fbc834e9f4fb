#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace workbench {

class JsonSink;

/// The text in quotes that `json` starts with, without escapes and in UTF-8; nothing where there is none.
std::optional<std::string_view> plainText(std::string_view json);

/// Reads an element of an array of which all is as programs write it: several times as fast as the parser, which takes
/// what is not. It takes nothing that is not JSON.
class PlainElement {
public:
    /// Whether `text` starts with an element, a comma and the end of a line, without escapes, fractions, exponents and
    /// deep nesting. It must stay where it is until `tell`.
    bool scan(std::string_view text);
    /// How much of the text that is; how many lines.
    std::size_t size() const noexcept { return m_size; }
    /// Hands the element that was found to the sink; `line` is that of what the sink is receiving, and that behind the
    /// element in the end.
    void tell(JsonSink& sink, std::size_t& line) const;

private:
    enum class Kind : std::uint8_t { beginObject, key, endObject, beginArray, endArray, text, number, yes, no, null };
    struct Token {
        Kind kind;
        std::uint32_t linesBefore;  ///< since the last token
        std::string_view text{};
    };

    bool take(char c) noexcept;
    void skipBlanks() noexcept;
    void add(Kind kind, std::string_view text = {});
    bool value(int depth);
    bool object(int depth);
    bool array(int depth);
    bool member(int depth);
    bool quoted(Kind kind);
    bool number();
    bool word(std::string_view word, Kind kind);

    std::string_view m_rest;
    std::uint32_t m_lines = 0;  ///< since the last token
    std::size_t m_size = 0;
    std::vector<Token> m_tokens;
};

}  // namespace workbench
