#pragma once

#include <string>
#include <string_view>

namespace CLI {
class App;
}

namespace kshmi {

/// The manual of the program, in the language of man: what the commands' help and the topics tell.
std::string manPage(const CLI::App& app, std::string_view version);

}  // namespace kshmi
