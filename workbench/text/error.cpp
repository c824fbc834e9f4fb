#include "workbench/text/error.h"

namespace workbench {

std::string atPlace(const std::string& file, std::size_t line, const std::string& pointer, const std::string& text) {
    std::string result = file;
    if (line > 0) result += ":" + std::to_string(line);
    if (!pointer.empty()) result += ": " + pointer;
    return result + ": " + text;
}

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
