#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

/// What the parser knows of a command, for whoever tells it: the help, the man page, the shells.
namespace kshmi {

struct HelpEntry {
    std::string term;
    std::string text;
};

struct HelpSection {
    std::string title;
    std::vector<HelpEntry> entries;
};

struct HelpPage {
    std::string command;  ///< "kshmi block add"
    std::string usage;    ///< what follows it
    std::string summary;
    std::vector<HelpSection> sections;
    std::string footer;  ///< paragraphs of a line each; lines that are indented stay as they are
};

HelpPage helpPageOf(const CLI::App& app);

/// "kshmi block add".
std::string fullNameOf(const CLI::App& app);
/// The commands that are listed, in order.
std::vector<const CLI::App*> commandsOf(const CLI::App& app);
/// Those that can be run as they are: of a group of commands its members.
std::vector<const CLI::App*> runnableCommandsOf(const CLI::App& app);
/// The options that are listed, without positional arguments.
std::vector<const CLI::Option*> optionsOf(const CLI::App& app);
/// "-o", "--output".
std::vector<std::string> namesOf(const CLI::Option& option);
bool takesValue(const CLI::Option& option);
/// The only values that it takes; empty when there are others.
std::vector<std::string> valuesOf(const CLI::Option& option);

/// The page as a text; lines are `width` columns wide at most, where words permit.
std::string helpText(const HelpPage& page, std::size_t width);
/// Words in lines of at most `width` columns, each behind `indent` blanks but the first.
std::string filled(std::string_view words, std::size_t width, std::size_t indent);

}  // namespace kshmi
