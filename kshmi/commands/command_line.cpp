#include "kshmi/commands/command_line.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <exception>
#include <memory>
#include <new>
#include <string_view>
#include <thread>

#include "kshmi/commands/command_options.h"
#include "kshmi/commands/commands.h"
#include "kshmi/commands/every_command.h"
#include "kshmi/help/help_page.h"
#include "workbench/text/columns.h"
#include "workbench/text/error.h"
#include "workbench/text/nearest.h"
#include "workbench/text/text.h"

namespace kshmi {

namespace {

using namespace workbench;

constexpr std::string_view kProgram = "kshmi";
// A mistake is told with the text that has it, which can be of any length.
constexpr std::size_t kLongestMistake = 600;

// The help in the words of the tool, as wide as the terminal.
class HelpFormatter : public CLI::FormatterBase {
public:
    explicit HelpFormatter(std::size_t width) : m_width(width) {}
    std::string make_help(const CLI::App* app, std::string, CLI::AppFormatMode) const override {
        return helpText(helpPageOf(*app), m_width);
    }

private:
    std::size_t m_width;
};

void describe(CLI::App& app, Run& run) {
    app.set_help_flag("-h,--help", "explain the command and its options");
    app.set_version_flag("--version", "kshmi " KSHMI_VERSION, "print the version");
    app.require_subcommand(1);
    app.footer(
        "\"kshmi help COMMAND\" explains a command, with examples.\n"
        "\"kshmi example > cruise.json\" makes the model of the examples.");
    for (const auto add : {addTour,  addExample, addShow,    addPorts,     addClients, addQuery, addMark,
                           addSet,   addUnmark,  addObserve, addUnobserve, addNew,     addBlock, addPort,
                           addChart, addRename,  addMove,    addRenumber,  addCheck,   addPrune, addDiff,
                           addMerge, addCarry,   addImport,  addRecord,    addReport,  addHelp,  addCompletion})
        add(app, run);
}

// The command that the words chose as far as they could be read.
const CLI::App& chosenCommand(const CLI::App& app) {
    const std::vector<CLI::App*> chosen = app.get_subcommands();
    return chosen.empty() ? app : chosenCommand(*chosen.front());
}

std::string listOf(const CLI::App& app) {
    const auto commands = commandsOf(app);
    return listed(commands, commands.size(), [](const CLI::App* command) { return command->get_name(); });
}

[[noreturn]] void refuseOption(const CLI::App& app, const std::string& word) {
    const std::string name = word.substr(0, word.find('='));
    Nearest nearest(name);
    for (const CLI::Option* const option : optionsOf(app))
        for (const std::string& known : namesOf(*option)) nearest.offer(known);
    const std::string question = nearest.question();
    if (app.get_parent() == nullptr)
        throw Error(
            fmt::format("there is no option {} in front of a command{}; "
                        "\"kshmi help\" lists the commands, "
                        "\"kshmi help COMMAND\" their options",
                        inQuotes(name), question));
    const std::string command = fullNameOf(app);
    throw Error(fmt::format("\"{}\" has no option {}{}", command, inQuotes(name),
                            question.empty()
                                ? fmt::format("; \"kshmi help{}\" lists its options", command.substr(kProgram.size()))
                                : question));
}

[[noreturn]] void refuseWord(const CLI::App& app, const std::string& word) {
    if (word.starts_with('-') && word.size() > 1) refuseOption(app, word);
    if (commandsOf(app).empty())
        throw Error(
            fmt::format("{} is one argument too many for \"{}\"; put names "
                        "with blanks in quotes",
                        inQuotes(word), fullNameOf(app)));
    Nearest nearest(word);
    for (const CLI::App* const command : commandsOf(app)) nearest.offer(command->get_name());
    const std::string question = nearest.question();
    throw Error(fmt::format("there is no command {}{}",
                            inQuotes((app.get_parent() == nullptr ? "" : app.get_name() + " ") + word),
                            question.empty() ? "; use one of " + listOf(app) : question));
}

// Words that belong nowhere say more than what is missing in their place.
void refuseStrayWords(const CLI::App& app) {
    if (const std::vector<std::string> stray = app.remaining(); !stray.empty()) refuseWord(app, stray.front());
    for (const CLI::App* const command : app.get_subcommands()) refuseStrayWords(*command);
}

// What the parser says when an option's value is missing or there is one too many, in plain words; all else as it is.
std::string inPlainWords(const std::string& mistake) {
    if (const std::size_t end = mistake.find(": At Most 1 required but received "); end != std::string::npos)
        return mistake.substr(0, end) + " is given more than once; give it once";
    constexpr std::string_view kMissing = " missing";
    constexpr std::string_view kRequired = ": 1 required ";
    const std::size_t end = mistake.find(kRequired);
    if (end == std::string::npos || !mistake.ends_with(kMissing)) return mistake;
    const std::string option = mistake.substr(0, end);
    std::string type = mistake.substr(end + kRequired.size());
    type.resize(type.size() - kMissing.size());
    if (const std::size_t range = type.find(':'); range != std::string::npos) type.replace(range, 1, " (").append(")");
    return fmt::format("{0} needs a value behind it: {0} {1}{2}", option, type,
                       type == "GLOB" ? fmt::format(", for example {} '*'", option) : "");
}

[[noreturn]] void refuse(const CLI::App& app, const CLI::ParseError& error) {
    refuseStrayWords(app);
    const CLI::App& command = chosenCommand(app);
    const std::string name = fullNameOf(command);
    const bool isMemberMissing = !commandsOf(command).empty() && command.get_parent() != nullptr;
    if (isMemberMissing) throw Error(fmt::format("say what \"{}\" is to do: {}", name, listOf(command)));
    const std::string mistake = shortened(inPlainWords(error.what()), kLongestMistake);
    if (mistake.ends_with('?')) throw Error(mistake);
    throw Error(fmt::format("{}; \"kshmi help{}\" explains it", mistake, name.substr(kProgram.size())));
}

// Converting what is no UTF-8 replaces it, and files would keep that.
void requireUtf8(const std::vector<std::string>& words) {
    for (std::size_t i = 0; i < words.size(); ++i) {
        const std::u16string text = toUtf16(words[i]);
        if (toUtf8(text) != words[i])
            throw Error(fmt::format("argument {}, {}: some bytes are not UTF-8; convert it", i + 1, inQuotes(text)));
    }
}

// What changes a file can wait for it.
void addWait(CLI::App& app, std::uint32_t& seconds) {
    for (CLI::App* const command : app.get_subcommands([](CLI::App*) { return true; })) {
        addWait(*command, seconds);
        if (command->get_option_no_throw("--dry-run") != nullptr)
            command->add_option("--wait", seconds, "try again for so many seconds while somebody else saves the file")
                ->type_name("SECONDS")
                ->transform(wholeNumber());
    }
}

// From the start, on what the file then holds: what was read before is out of date.
int runWaiting(const Run& command, const Output& output, std::chrono::seconds wait) {
    constexpr std::chrono::milliseconds kPause{100};
    const auto end = std::chrono::steady_clock::now() + wait;
    while (true) {
        try {
            return command(output);
        } catch (const Error& error) {
            if (error.code() != ErrorCode::inUse || std::chrono::steady_clock::now() >= end) throw;
        }
        std::this_thread::sleep_for(kPause);
    }
}

int run(std::vector<std::string> words, const Output& output) {
    requireUtf8(words);
    CLI::App app(
        "Marks signals in model files, lets clients watch them, and "
        "tells what is observed",
        "kshmi");
    app.formatter(std::make_shared<HelpFormatter>(output.width));
    Run command;
    EveryCommand options;
    describe(app, command);
    addToEveryCommand(app, options);
    std::uint32_t wait = 0;
    addWait(app, wait);
    if (words.empty()) {
        output.err << app.help();
        return kWrongUsage;
    }
    std::reverse(words.begin(), words.end());
    try {
        app.parse(std::move(words));
    } catch (const CLI::ParseError& error) {
        const bool isAskedFor = error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success);
        if (!isAskedFor) refuse(app, error);
        app.exit(error, output.out, output.err);
        return kSuccess;
    }
    return runWaiting([&](const Output& to) { return runAsAsked(command, options, to); }, output,
                      std::chrono::seconds(wait));
}

}  // namespace

int runCommandLine(std::vector<std::string> arguments, const Output& output) noexcept {
    try {
        return run(std::move(arguments), output);
    } catch (const std::bad_alloc&) {
        output.err << "kshmi: not enough memory\n";
        return kHostRefused;
    } catch (const Error& error) {
        output.err << "kshmi: " << printableMessage(messageOf(error)) << '\n';
        return exitCodeOf(error);
    } catch (const std::exception& exception) {
        output.err << "kshmi: " << printableMessage(exception.what()) << '\n';
        return kHostRefused;
    }
}

}  // namespace kshmi
