#pragma once

#include <ostream>
#include <string>
#include <string_view>

#include "workbench/json/json_object.h"
#include "workbench/text/text.h"

namespace kshmi {

/// What a command prints with "--json": one object that starts with the version of this form and the command's name,
/// a member a line. docs/json.md describes it.
class JsonDocument {
public:
    static constexpr int kVersion = 1;

    explicit JsonDocument(std::string_view command) : m_object(m_text, workbench::kLines) {
        m_object.number("kshmi", kVersion).text("command", command);
    }
    /// For more members.
    workbench::JsonObject& object() noexcept { return m_object; }
    /// For the value of a member that was named last.
    std::string& text() noexcept { return m_text; }
    /// An array, an element a line; `append(element)` appends one to `text()`.
    template <class Range, class Append>
    void list(std::string_view name, const Range& elements, Append append) {
        m_object.name(name);
        workbench::appendJsonArray(m_text, elements, append, kElements);
    }
    /// Ends the document and prints it.
    void print(std::ostream& out) {
        m_object.close();
        out << workbench::printableJson(m_text) << '\n';
    }

private:
    static constexpr workbench::JsonLayout kElements{"\n    ", ",\n    ", "\n  "};
    std::string m_text;
    workbench::JsonObject m_object;
};

}  // namespace kshmi
