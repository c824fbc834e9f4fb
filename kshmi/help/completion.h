#pragma once

#include <string>

namespace CLI {
class App;
}

namespace kshmi {

/// A script with which bash completes the program's commands, options and values, and files for the rest.
std::string bashCompletion(const CLI::App& app);
/// The same for zsh, with what each of them is.
std::string zshCompletion(const CLI::App& app);

}  // namespace kshmi
