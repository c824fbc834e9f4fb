#pragma once

#include <cstddef>
#include <functional>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>

#include "workbench/json/json_object.h"
#include "workbench/text/text.h"

namespace kshmi {

/// An object with a member a line, and lists in it with an element a line.
class JsonMembers {
public:
    /// Takes what is written so far out of a long text.
    using Drain = std::function<void(std::string& text)>;

    /// For more members.
    workbench::JsonObject& object() noexcept { return m_object; }
    /// For the value of a member that was named last.
    std::string& text() noexcept { return m_text; }
    /// An array, an element a line; `append(element)` appends one to `text()`.
    template <class Range, class Append>
    void list(std::string_view name, const Range& elements, Append append) {
        constexpr std::size_t kLong = std::size_t{1} << 16U;
        m_object.name(name);
        const auto appendOne = [&](const auto& element) {
            append(element);
            if (m_drain && m_text.size() > kLong) m_drain(m_text);
        };
        workbench::appendJsonArray(m_text, elements, appendOne, m_layout.elements);
    }

protected:
    struct Layout {
        workbench::JsonLayout members;
        workbench::JsonLayout elements;
    };
    explicit JsonMembers(const Layout& layout, Drain drain = {})
        : m_layout(layout), m_drain(std::move(drain)), m_object(m_text, layout.members) {}

private:
    std::string m_text;
    Layout m_layout;
    Drain m_drain;
    workbench::JsonObject m_object;
};

/// What a command prints with "--json": one object that starts with the version of this form and the command's name.
/// docs/json.md describes it.
class JsonDocument : public JsonMembers {
public:
    static constexpr int kVersion = 1;

    /// Of a list's elements, each on a line of its own.
    static constexpr workbench::JsonLayout kElements{"\n    ", ",\n    ", "\n  "};

    explicit JsonDocument(std::string_view command) : JsonMembers({workbench::kLines, kElements}) {
        object().number("kshmi", kVersion).text("command", command);
    }
    /// Prints what is written so far.
    void flush(std::ostream& out) {
        out << workbench::printableJson(text());
        text().clear();
    }
    /// Ends the document and prints it.
    void print(std::ostream& out) {
        object().close();
        flush(out);
        out << '\n';
    }
};

/// An element of such a document's list that takes more than a line. What `drain` has taken is no more in it.
class JsonEntry : public JsonMembers {
public:
    explicit JsonEntry(Drain drain = {})
        : JsonMembers({{"\n      ", ",\n      ", "\n    "}, {"\n        ", ",\n        ", "\n      "}},
                      std::move(drain)) {}
    std::string take() {
        object().close();
        return std::move(text());
    }
};

}  // namespace kshmi
