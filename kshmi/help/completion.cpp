#include "kshmi/help/completion.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <CLI/CLI.hpp>

#include "kshmi/help/help_page.h"
#include "kshmi/help/topics.h"

namespace kshmi {

namespace {

std::vector<std::string> optionNames(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::Option* const option : optionsOf(app))
        for (const std::string& name : namesOf(*option)) names.push_back(name);
    return names;
}

std::vector<std::string> commandNames(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::App* const command : commandsOf(app)) names.push_back(command->get_name());
    return names;
}

// Words that stand for themselves behind a command: its members, what an argument can be, what help is given on.
std::vector<std::string> wordsBehind(const CLI::App& app) {
    std::vector<std::string> words = commandNames(app);
    for (const CLI::Option* const option : app.get_options())
        if (option->get_positional())
            for (std::string& value : valuesOf(*option)) words.push_back(std::move(value));
    if (app.get_name() == "help" && app.get_parent() != nullptr) {
        words = commandNames(*app.get_parent());
        for (const Topic& topic : topics()) words.emplace_back(topic.name);
    }
    return words;
}

// A branch for each command: which words may follow, and which values an option takes. "-" stands for files.
void appendBashCases(std::string& script, const CLI::App& app) {
    script += fmt::format("        '{}') words='{}'; commands='{}' ;;\n", fullNameOf(app),
                          fmt::join(optionNames(app), " "), fmt::join(wordsBehind(app), " "));
    for (const CLI::App* const command : commandsOf(app)) appendBashCases(script, *command);
}

void appendBashValues(std::string& script, const CLI::App& app) {
    for (const CLI::Option* const option : optionsOf(app)) {
        if (!takesValue(*option)) continue;
        std::vector<std::string> patterns;
        for (const std::string& name : namesOf(*option))
            patterns.push_back(fmt::format("'{} {}'", fullNameOf(app), name));
        const std::vector<std::string> values = valuesOf(*option);
        script += fmt::format("        {}) values='{}' ;;\n", fmt::join(patterns, "|"),
                              values.empty() ? "-" : fmt::format("{}", fmt::join(values, " ")));
    }
    for (const CLI::App* const command : commandsOf(app)) appendBashValues(script, *command);
}

std::string zshEscaped(const std::string& text) {
    std::string result;
    for (const char c : text) {
        if (c == '\'')
            result += "'\\''";
        else if (c == '[' || c == ']' || c == ':' || c == '\\')
            result += {'\\', c};
        else
            result += c;
    }
    return result;
}

std::string zshOption(const CLI::Option& option) {
    std::string lines;
    for (const std::string& name : namesOf(option)) {
        lines += fmt::format(" \\\n            '*{}[{}]", name, zshEscaped(option.get_description()));
        const std::vector<std::string> values = valuesOf(option);
        if (!values.empty())
            lines += fmt::format(":value:({})", fmt::join(values, " "));
        else if (takesValue(option))
            lines += ":value:_files";
        lines += '\'';
    }
    return lines;
}

void appendZshFunction(std::string& script, const CLI::App& app) {
    std::string name = fullNameOf(app);
    std::replace(name.begin(), name.end(), ' ', '_');
    const std::vector<const CLI::App*> commands = commandsOf(app);
    script += fmt::format("_{}() {{\n    local -a commands\n", name);
    for (const CLI::App* const command : commands)
        script += fmt::format("    commands+=('{}:{}')\n", command->get_name(), zshEscaped(command->get_description()));
    script += fmt::format("    _arguments{}", commands.empty() ? "" : " -C");
    for (const CLI::Option* const option : optionsOf(app)) script += zshOption(*option);
    if (commands.empty()) {
        const std::vector<std::string> words = wordsBehind(app);
        const std::string offered = words.empty() ? "file:_files" : fmt::format("word:({})", fmt::join(words, " "));
        script += fmt::format(" \\\n            '*:{}'\n}}\n\n", offered);
        return;
    }
    script += fmt::format(
        " \\\n            '1:command:{{_describe command commands}}' '*::argument:->argument'\n"
        "    [[ $state != argument ]] || (( ! $+functions[_{0}_${{words[1]}}] )) || _{0}_${{words[1]}}\n}}\n\n",
        name);
    for (const CLI::App* const command : commands) appendZshFunction(script, *command);
}

constexpr const char* kBashScript = R"(# bash completion for kshmi; written by "kshmi completion bash"
_kshmi() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} command=kshmi
    local words commands values word
    COMPREPLY=()
    for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        commands=
        _kshmi_of "$command"
        [[ " $commands " == *" $word "* ]] && command+=" $word"
    done
    _kshmi_of "$command"
    _kshmi_values "$command $previous"
    if [[ -n $values && $values != - ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$values" -- "$current")
    elif [[ -z $values && $current == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
    elif [[ -z $values && -n $commands ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$commands" -- "$current")
    else
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen -f -- "$current")
    fi
}
_kshmi_of() {
    case $1 in
)";

}  // namespace

std::string bashCompletion(const CLI::App& app) {
    std::string script = kBashScript;
    appendBashCases(script, app);
    script += "    esac\n}\n_kshmi_values() {\n    values=\n    case $1 in\n";
    appendBashValues(script, app);
    return script + "    esac\n}\ncomplete -F _kshmi kshmi\n";
}

std::string zshCompletion(const CLI::App& app) {
    std::string script = "#compdef kshmi\n# zsh completion for kshmi; written by \"kshmi completion zsh\"\n\n";
    appendZshFunction(script, app);
    return script + "if [[ $funcstack[1] == _kshmi ]]; then _kshmi \"$@\"; else compdef _kshmi kshmi; fi\n";
}

}  // namespace kshmi
