#pragma once

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
    /// For more members.
    workbench::JsonObject& object() noexcept { return m_object; }
    /// For the value of a member that was named last.
    std::string& text() noexcept { return m_text; }
    /// An array, an element a line; `append(element)` appends one to `text()`.
    template <class Range, class Append>
    void list(std::string_view name, const Range& elements, Append append) {
        m_object.name(name);
        workbench::appendJsonArray(m_text, elements, append, m_layout.elements);
    }

protected:
    struct Layout {
        workbench::JsonLayout members;
        workbench::JsonLayout elements;
    };
    explicit JsonMembers(const Layout& layout) : m_layout(layout), m_object(m_text, layout.members) {}

private:
    std::string m_text;
    Layout m_layout;
    workbench::JsonObject m_object;
};

/// What a command prints with "--json": one object that starts with the version of this form and the command's name.
/// docs/json.md describes it.
class JsonDocument : public JsonMembers {
public:
    static constexpr int kVersion = 1;

    explicit JsonDocument(std::string_view command) : JsonMembers({workbench::kLines, {"\n    ", ",\n    ", "\n  "}}) {
        object().number("kshmi", kVersion).text("command", command);
    }
    /// Ends the document and prints it.
    void print(std::ostream& out) {
        object().close();
        out << workbench::printableJson(text()) << '\n';
    }
};

/// An element of such a document's list that takes more than a line.
class JsonEntry : public JsonMembers {
public:
    JsonEntry() : JsonMembers({{"\n      ", ",\n      ", "\n    "}, {"\n        ", ",\n        ", "\n      "}}) {}
    std::string take() {
        object().close();
        return std::move(text());
    }
};

}  // namespace kshmi
