#pragma once

#include <concepts>
#include <cstddef>
#include <string>
#include <string_view>

#include "workbench/json/json_text.h"

/// How everything here writes JSON: objects and arrays, element by element, at the end of a text.
namespace workbench {

/// What stands around the elements of an object or array; none of it in an empty one.
struct JsonLayout {
    std::string_view first{};
    std::string_view between = ", ";
    std::string_view last{};
};
inline constexpr JsonLayout kOneLine{};
/// Each element on a line of its own.
inline constexpr JsonLayout kLines{"\n  ", ",\n  ", "\n"};

/// What arrays and objects have in common. `next` makes room for one more element, to be appended to the text.
class JsonElements {
public:
    void next() {
        m_out += m_isEmpty ? m_layout.first : m_layout.between;
        m_isEmpty = false;
    }
    void close() {
        if (!m_isEmpty) m_out += m_layout.last;
        m_out += m_close;
    }

protected:
    JsonElements(std::string& out, JsonLayout layout, char open, char close)
        : m_out(out), m_layout(layout), m_close(close) {
        m_out += open;
    }

    std::string& m_out;

private:
    JsonLayout m_layout;
    char m_close;
    bool m_isEmpty = true;
};

class JsonArray : public JsonElements {
public:
    explicit JsonArray(std::string& out, JsonLayout layout = kOneLine) : JsonElements(out, layout, '[', ']') {}
};

class JsonObject : private JsonElements {
public:
    using JsonElements::close;

    explicit JsonObject(std::string& out, JsonLayout layout = kOneLine) : JsonElements(out, layout, '{', '}') {}
    /// Makes room for one more member's value, to be appended to the text.
    JsonObject& name(std::string_view key) {
        next();
        appendJsonText(m_out, key);
        m_out += ": ";
        return *this;
    }
    /// What `name` writes for a key, to be written many times.
    static std::string memberName(std::string_view key) {
        std::string written;
        appendJsonText(written, key);
        return written += ": ";
    }
    JsonObject& text(std::string_view key, std::u16string_view value) {
        return name(key), appendJsonText(m_out, value), *this;
    }
    JsonObject& text(std::string_view key, std::string_view value) {
        return name(key), appendJsonText(m_out, value), *this;
    }
    JsonObject& truth(std::string_view key, bool value) { return name(key), m_out += value ? "true" : "false", *this; }
    JsonObject& number(std::string_view key, std::integral auto value) {
        return name(key), m_out += std::to_string(value), *this;
    }
    JsonObject& null(std::string_view key) { return name(key), m_out += "null", *this; }
    /// The text that it is written to, for the value of the member that was named last.
    std::string& out() noexcept { return m_out; }
};

/// Appends a JSON array of the elements of any range; `append(element)` appends one.
template <class Range, class Append>
void appendJsonArray(std::string& out, const Range& elements, Append append, JsonLayout layout = kOneLine) {
    JsonArray array(out, layout);
    for (const auto& element : elements) {
        array.next();
        append(element);
    }
    array.close();
}
/// The same of texts.
template <class Range>
void appendJsonTexts(std::string& out, const Range& texts) {
    appendJsonArray(out, texts, [&](const auto& text) { appendJsonText(out, text); });
}

}  // namespace workbench
