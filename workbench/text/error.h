#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>

namespace workbench {

/// What the user is told before the tool gives up: what is wrong and what to do about it. UTF-8, one line.
class Error : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// "FILE:LINE: /json/pointer: text"; a line of 0 and an empty pointer are left out.
std::string atPlace(const std::string& file, std::size_t line, const std::string& pointer, const std::string& text);

/// One reference token of a JSON pointer with its leading "/", escaped.
std::string pointerToken(std::string_view key);

}  // namespace workbench
