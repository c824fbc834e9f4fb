#include "workbench/text/error.h"

#include <fmt/format.h>

#include <utility>

namespace workbench {

std::string atPlace(const ErrorPlace& place, const std::string& text) {
    std::string result = place.file;
    if (place.line > 0) result += fmt::format(":{}", place.line);
    if (place.column > 0) result += fmt::format(":{}", place.column);
    if (!place.pointer.empty()) result += (result.empty() ? "" : ": ") + place.pointer;
    return result.empty() ? text : fmt::format("{}: {}", result, text);
}

Error::Error(ErrorPlace place, const std::string& text, ErrorCode code, Remedy remedy)
    : std::runtime_error(atPlace(place, text)),
      m_place(std::move(place)),
      m_text(text),
      m_code(code),
      m_remedy(remedy) {}

std::string pointerToken(std::string_view key) {
    std::string token = "/";
    for (const char c : key) {
        if (c == '~')
            token += "~0";
        else if (c == '/')
            token += "~1";
        else
            token += c;
    }
    return token;
}

}  // namespace workbench
