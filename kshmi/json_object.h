#pragma once

#include <fmt/format.h>

#include <string>
#include <string_view>

#include "kshmi/host_value_writer.h"

namespace kshmi {

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

}  // namespace kshmi
