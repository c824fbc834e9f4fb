#include "kshmi/help/help_page.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <CLI/CLI.hpp>
#include <algorithm>

namespace kshmi {

namespace {

// The part of a type's name in front of what its values are checked for.
std::string typeOf(const CLI::Option& option) {
    const std::string name = option.get_type_name();
    return name.substr(0, name.find(':'));
}

std::string checkOf(const CLI::Option& option) {
    const std::string name = option.get_type_name();
    const std::size_t colon = name.find(':');
    return colon == std::string::npos ? "" : name.substr(colon + 1);
}

std::string valueWord(const CLI::Option& option) {
    if (const std::vector<std::string> values = valuesOf(option); !values.empty())
        return fmt::format("{}", fmt::join(values, "|"));
    const std::string type = typeOf(option);
    return type == "UINT" || type == "INT" || type == "FLOAT" ? "NUMBER" : type;
}

std::string positionalWord(const CLI::Option& option) {
    const std::string name = option.get_name(true) + (option.get_items_expected_max() > 1 ? "..." : "");
    return option.get_required() ? name : fmt::format("[{}]", name);
}

HelpEntry entryOf(const CLI::Option& option) {
    if (option.get_positional()) return {option.get_name(true), option.get_description()};
    const std::string names = fmt::format("{}", fmt::join(namesOf(option), ", "));
    const std::string check = valuesOf(option).empty() ? checkOf(option) : "";
    const bool isTold = check.empty() || check.ends_with(" to 4294967295");
    return {takesValue(option) ? fmt::format("{} {}", names, valueWord(option)) : names,
            isTold ? option.get_description() : fmt::format("{} ({})", option.get_description(), check)};
}

std::vector<const CLI::Option*> positionalsOf(const CLI::App& app) {
    return app.get_options([](const CLI::Option* option) { return option->get_positional(); });
}

HelpSection& sectionOf(HelpPage& page, const std::string& title) {
    const auto at = std::find_if(page.sections.begin(), page.sections.end(),
                                 [&](const HelpSection& section) { return section.title == title; });
    return at != page.sections.end() ? *at : page.sections.emplace_back(HelpSection{title, {}});
}

std::string usageOf(const CLI::App& app) {
    std::string usage = "[OPTIONS]";
    for (const CLI::Option* const option : optionsOf(app))
        if (option->get_required())
            usage += fmt::format(" {}", takesValue(*option)
                                            ? fmt::format("{} {}", namesOf(*option).back(), valueWord(*option))
                                            : namesOf(*option).back());
    for (const CLI::Option* const option : positionalsOf(app)) usage += " " + positionalWord(*option);
    return commandsOf(app).empty() ? usage : usage + " COMMAND ...";
}

}  // namespace

std::string fullNameOf(const CLI::App& app) {
    return app.get_parent() == nullptr ? app.get_name()
                                       : fmt::format("{} {}", fullNameOf(*app.get_parent()), app.get_name());
}

std::vector<const CLI::App*> commandsOf(const CLI::App& app) {
    return app.get_subcommands([](const CLI::App* command) { return !command->get_group().empty(); });
}

std::vector<const CLI::App*> runnableCommandsOf(const CLI::App& app) {
    std::vector<const CLI::App*> runnable;
    for (const CLI::App* const command : commandsOf(app)) {
        const std::vector<const CLI::App*> members = runnableCommandsOf(*command);
        runnable.insert(runnable.end(), members.begin(), members.end());
        if (members.empty()) runnable.push_back(command);
    }
    return runnable;
}

std::vector<const CLI::Option*> optionsOf(const CLI::App& app) {
    return app.get_options(
        [](const CLI::Option* option) { return !option->get_positional() && !option->get_group().empty(); });
}

std::vector<std::string> namesOf(const CLI::Option& option) {
    std::vector<std::string> names;
    for (const std::string& name : option.get_snames()) names.push_back("-" + name);
    for (const std::string& name : option.get_lnames()) names.push_back("--" + name);
    return names;
}

bool takesValue(const CLI::Option& option) { return option.get_items_expected_max() > 0; }

std::vector<std::string> valuesOf(const CLI::Option& option) {
    const std::string check = checkOf(option);
    std::vector<std::string> values;
    if (!check.starts_with('{') || !check.ends_with('}')) return values;
    for (std::size_t start = 1; start < check.size();) {
        const std::size_t end = std::min(check.find(',', start), check.size() - 1);
        values.push_back(check.substr(start, end - start));
        start = end + 1;
    }
    return values;
}

HelpPage helpPageOf(const CLI::App& app) {
    HelpPage page{fullNameOf(app), usageOf(app), app.get_description(), {}, app.get_footer()};
    for (const CLI::Option* const option : positionalsOf(app))
        sectionOf(page, "Arguments").entries.push_back(entryOf(*option));
    for (const CLI::App* const command : commandsOf(app))
        sectionOf(page, "Commands").entries.push_back({command->get_name(), command->get_description()});
    for (const CLI::Option* const option : optionsOf(app))
        sectionOf(page, option->get_group()).entries.push_back(entryOf(*option));
    return page;
}

}  // namespace kshmi
