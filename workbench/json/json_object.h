#pragma once

#include <fmt/format.h>

#include <cstddef>
#include <string>
#include <string_view>

#include "workbench/json/json_text.h"

namespace workbench {

/// One JSON object on one line, written member by member.
class JsonObject {
public:
    explicit JsonObject(std::string& out) : m_out(out) { m_out += '{'; }
    JsonObject& text(const char* key, std::u16string_view value) {
        return name(key), appendJsonText(m_out, value), *this;
    }
    JsonObject& text(const char* key, std::string_view value) { return name(key), appendJsonText(m_out, value), *this; }
    JsonObject& truth(const char* key, bool value) { return plain(key, value ? "true" : "false"); }
    /// JSON as it stands: a number, an array, `null`.
    JsonObject& plain(const char* key, const std::string& value) { return name(key), m_out += value, *this; }
    void close() { m_out += '}'; }

private:
    void name(const char* key) {
        m_out += fmt::format("{}\"{}\": ", m_isEmpty ? "" : ", ", key);
        m_isEmpty = false;
    }
    std::string& m_out;
    bool m_isEmpty = true;
};

/// Appends what stands between the brackets of a JSON array with each element on a line of its own; `append(i)`
/// appends the i-th (0-based).
template <typename Append>
void appendJsonLines(std::string& out, std::size_t count, Append append) {
    for (std::size_t i = 0; i < count; ++i) {
        out += i > 0 ? ",\n  " : "\n  ";
        append(i);
    }
}

}  // namespace workbench
