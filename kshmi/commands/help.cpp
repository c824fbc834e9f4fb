#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "kshmi/commands/command_options.h"
#include "kshmi/commands/commands.h"
#include "kshmi/help/completion.h"
#include "kshmi/help/example_model.h"
#include "kshmi/help/example_unit.h"
#include "kshmi/help/help_page.h"
#include "kshmi/help/man_page.h"
#include "kshmi/help/topics.h"
#include "workbench/text/error.h"
#include "workbench/text/nearest.h"
#include "workbench/text/text.h"

// The commands that tell of the tool itself.
namespace kshmi {

namespace {

using namespace workbench;

constexpr std::size_t kUsualPageWidth = 80;

std::size_t widthOf(const Output& output) { return output.width > 0 ? output.width : kUsualPageWidth; }

HelpSection topicList() {
    HelpSection section{"Topics (kshmi help TOPIC)", {}};
    for (const Topic& topic : topics()) section.entries.push_back({topic.name, topic.title});
    return section;
}

const CLI::App* commandOf(const CLI::App& app, const std::string& name) {
    for (const CLI::App* const command : commandsOf(app))
        if (command->get_name() == name) return command;
    return nullptr;
}

[[noreturn]] void refuse(const CLI::App& app, const std::string& word) {
    Nearest nearest(word);
    for (const CLI::App* const command : commandsOf(app)) nearest.offer(command->get_name());
    if (app.get_parent() == nullptr)
        for (const Topic& topic : topics()) nearest.offer(topic.name);
    const std::string question = nearest.question();
    throw Error(fmt::format("there is no command or topic {}{}", inQuotes(word),
                            question.empty() ? "; \"kshmi help\" lists them" : question));
}

int runHelp(const CLI::App& app, const std::vector<std::string>& words, const Output& output) {
    if (words.size() == 1)
        if (const Topic* const topic = topicOf(words.front())) {
            output.out << topicText(*topic, widthOf(output));
            return kSuccess;
        }
    const CLI::App* command = &app;
    for (const std::string& word : words) {
        const CLI::App* const next = commandOf(*command, word);
        if (next == nullptr) refuse(*command, word);
        command = next;
    }
    HelpPage page = helpPageOf(*command);
    if (command == &app) page.sections.push_back(topicList());
    output.out << helpText(page, output.width);
    return kSuccess;
}

}  // namespace

void addHelp(CLI::App& app, Run& run) {
    const auto words = std::make_shared<std::vector<std::string>>();
    const auto isManual = std::make_shared<bool>(false);
    CLI::App* const command = app.add_subcommand("help", "Explain a command or a topic");
    command->footer("Examples:\n  kshmi help\n  kshmi help mark\n  kshmi help globs");
    command->add_option("WORD", *words, "a command, with its member (\"block add\"), or a topic");
    command->add_flag("--man", *isManual)->group("");
    command->callback([=, &app, &run] {
        run = [=, &app](const Output& output) -> int {
            if (!*isManual) return runHelp(app, *words, output);
            output.out << manPage(app, KSHMI_VERSION);
            return kSuccess;
        };
    });
}

void addCompletion(CLI::App& app, Run& run) {
    const auto shell = std::make_shared<std::string>();
    CLI::App* const command =
        app.add_subcommand("completion", "Print what makes a shell complete the tool's commands and options");
    command->footer(
        "Examples:\n"
        "  kshmi completion bash > kshmi.bash && source ./kshmi.bash\n"
        "  kshmi completion zsh > _kshmi");
    command->add_option("SHELL", *shell, "the shell: bash or zsh")->required()->check(oneOf({"bash", "zsh"}));
    command->callback([=, &app, &run] {
        run = [=, &app](const Output& output) -> int {
            output.out << (*shell == "bash" ? bashCompletion(app) : zshCompletion(app));
            return kSuccess;
        };
    });
}

void addExample(CLI::App& app, Run& run) {
    const auto isUnit = std::make_shared<bool>(false);
    CLI::App* const command =
        app.add_subcommand("example", "Print the model file, cruise.json, of the examples in this help");
    command->footer("Examples:\n  kshmi example > cruise.json\n  kshmi example --unit > cruise.fmu");
    command->add_flag("--unit", *isUnit, "print a unit (.fmu) instead, which can be imported and recorded");
    command->callback([=, &run] {
        run = [=](const Output& output) -> int {
            output.out << (*isUnit ? exampleUnit() : exampleModel());
            return kSuccess;
        };
    });
}

}  // namespace kshmi
