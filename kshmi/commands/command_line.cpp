#include "kshmi/commands/command_line.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <exception>
#include <new>
#include <string_view>

#include "kshmi/commands/command_options.h"
#include "kshmi/commands/commands.h"
#include "workbench/text/columns.h"
#include "workbench/text/error.h"
#include "workbench/text/text.h"

namespace kshmi {

namespace {

using namespace workbench;

/// A mistake is told with the text that has it, which can be of any length.
constexpr std::size_t kLongestMistake = 600;

void describe(CLI::App& app, Run& run) {
    app.set_version_flag("--version", "kshmi " KSHMI_VERSION);
    app.require_subcommand(1);
    app.footer("\"kshmi COMMAND --help\" explains a command, with examples.");
    for (const auto add : {addTour, addShow, addMark, addSet, addUnmark, addQuery, addObserve, addUnobserve, addClients,
                           addPorts, addRename, addMove, addRenumber, addImport, addDiff, addMerge, addCarry})
        add(app, run);
}

void requireCommand(const CLI::App& app, const std::string& word) {
    if (word.starts_with('-')) {
        if (app.get_option_no_throw(word) != nullptr) return;
        throw Error(
            "there is no option " + inQuotes(word) +
            " in front of a command; \"kshmi --help\" lists the commands, \"kshmi COMMAND --help\" their options");
    }
    std::string list;
    for (const CLI::App* const command : app.get_subcommands([](const CLI::App*) { return true; })) {
        if (command->get_name() == word) return;
        list += (list.empty() ? "" : ", ") + command->get_name();
    }
    throw Error("there is no command " + inQuotes(word) + "; use one of " + list);
}

/// Converting what is no UTF-8 replaces it, and files would keep that.
void requireUtf8(const std::vector<std::string>& words) {
    for (std::size_t i = 0; i < words.size(); ++i) {
        const std::u16string text = toUtf16(words[i]);
        if (toUtf8(text) != words[i])
            throw Error(fmt::format("argument {}, {}: some bytes are not UTF-8; convert it", i + 1, inQuotes(text)));
    }
}

int run(std::vector<std::string> words, const Output& output) {
    requireUtf8(words);
    CLI::App app("Marks signals in model files, lets clients watch them, and tells what is observed", "kshmi");
    Run command;
    describe(app, command);
    if (words.empty()) {
        output.err << app.help();
        return kFailure;
    }
    requireCommand(app, words.front());
    std::reverse(words.begin(), words.end());
    try {
        app.parse(std::move(words));
    } catch (const CLI::ParseError& error) {
        const bool isAskedFor = error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success);
        if (!isAskedFor)
            throw Error(shortened(error.what(), kLongestMistake) + "; \"kshmi COMMAND --help\" explains it");
        app.exit(error, output.out, output.err);
        return kSuccess;
    }
    return command(output);
}

}  // namespace

int runCommandLine(std::vector<std::string> arguments, const Output& output) noexcept {
    try {
        return run(std::move(arguments), output);
    } catch (const std::bad_alloc&) {
        output.err << "kshmi: not enough memory\n";
    } catch (const Error& error) {
        output.err << "kshmi: " << printableMessage(messageOf(error)) << '\n';
    } catch (const std::exception& exception) {
        output.err << "kshmi: " << printableMessage(exception.what()) << '\n';
    }
    return kFailure;
}

}  // namespace kshmi
