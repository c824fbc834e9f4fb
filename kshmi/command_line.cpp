#include "kshmi/command_line.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdint>
#include <exception>
#include <limits>
#include <new>
#include <optional>
#include <string_view>

#include "kshmi/command_options.h"
#include "kshmi/commands.h"
#include "kshmi/error.h"
#include "kshmi/text.h"

namespace kshmi {

namespace {

constexpr std::uint32_t kLargest = std::numeric_limits<std::int32_t>::max();

void addSettings(CLI::App& command, SignalSettings& settings) {
    command.add_option("--name", settings.name, "signal name; the port's or chart item's name if left out");
    command.add_option("--decimation", settings.decimation, "keep every n-th sample")
        ->transform(wholeNumber(1, kLargest));
    command.add_option("--max-points", settings.maxPoints, "most points to keep, 0 for any number")
        ->transform(wholeNumber(0, kLargest));
    command.add_flag("--frame-based", settings.isFrameBased, "the signal is frame based");
    command.add_flag("--hide", settings.isHidden, "do not show it in the signal viewer");
    command.add_flag("--exclude-from-save", settings.isExcludedFromSave, "leave it out when the model is saved");
    command.add_flag("--buffered", settings.isBuffered, "stream it buffered from the target");
    command.add_option("--visual-type", settings.visualType, "kind of display that it feeds");
}

void addMark(CLI::App& app, MarkArguments& arguments, Run& run) {
    CLI::App* const command =
        addCommand(app, "mark", "Mark ports and chart items as signals and save the model",
                   "  kshmi mark cruise.json Sensors/Speed:1 --name speed --decimation 10\n"
                   "  kshmi mark cruise.json 'Control/Mode/Engaged' --activity Child\n"
                   "  kshmi mark cruise.json --all 'cruise/Sensors/*' --except '*:valid' --dry-run",
                   arguments.file);
    addReferences(*command, arguments.selection.references);
    addPatterns(*command, arguments.selection);
    addReferenceOptions(*command, arguments.selection.options);
    addSettings(*command, arguments.settings);
    command->add_flag("--again", arguments.isAgain, "add a further signal where one is");
    addDryRun(*command, arguments.isDryRun);
    runWith(*command, runMark, arguments, run);
}

void addUnmark(CLI::App& app, UnmarkArguments& arguments, Run& run) {
    CLI::App* const command =
        addCommand(app, "unmark", "Remove all signals on ports and chart items and save the model",
                   "  kshmi unmark cruise.json Sensors/Speed:1\n"
                   "  kshmi unmark cruise.json --all 'cruise/Plant/*'\n"
                   "  kshmi unmark cruise.json --dangling",
                   arguments.file);
    addReferences(*command, arguments.selection.references);
    addPatterns(*command, arguments.selection);
    addReferenceOptions(*command, arguments.selection.options);
    command->add_flag("--dangling", arguments.isDangling, "remove signals whose block, port or chart item is gone");
    addDryRun(*command, arguments.isDryRun);
    runWith(*command, runUnmark, arguments, run);
}

void addQuery(CLI::App& app, QueryArguments& arguments, Run& run) {
    CLI::App* const command =
        addCommand(app, "query", "Tell whether ports and chart items are observed; exit 1 if any is not",
                   "  kshmi query cruise.json Sensors/Speed:valid\n"
                   "  kshmi query cruise.json Control/Mode --activity Child --json",
                   arguments.file);
    addReferences(*command, arguments.references)->required();
    addReferenceOptions(*command, arguments.options);
    command->add_flag("--json", arguments.isJson, "print JSON");
    runWith(*command, runQuery, arguments, run);
}

void addShow(CLI::App& app, ShowArguments& arguments, Run& run) {
    CLI::App* const command =
        addCommand(app, "show", "List a model's signals, its observers, and its blocks with what is observed",
                   "  kshmi show cruise.json\n  kshmi show cruise.json --json", arguments.file);
    command->add_flag("--json", arguments.isJson, "print JSON");
    runWith(*command, runShow, arguments, run);
}

/// All that the command line may say.
struct Arguments {
    std::string tourFile;
    MarkArguments mark;
    UnmarkArguments unmark;
    QueryArguments query;
    ShowArguments show;
    EditorArguments editor;
};

void describe(CLI::App& app, Arguments& arguments, Run& run) {
    app.set_version_flag("--version", "kshmi " KSHMI_VERSION);
    app.require_subcommand(1);
    app.footer("\"kshmi COMMAND --help\" explains a command, with examples.");
    CLI::App* const tour = addCommand(app, "tour", "Show the main job on a copy of a model, step by step",
                                      "  kshmi tour cruise.json", arguments.tourFile);
    runWith(*tour, runTour, arguments.tourFile, run);
    addShow(app, arguments.show, run);
    addMark(app, arguments.mark, run);
    addUnmark(app, arguments.unmark, run);
    addQuery(app, arguments.query, run);
    addEditorCommands(app, arguments.editor, run);
}

void requireCommand(const CLI::App& app, const std::string& word) {
    if (word.starts_with('-')) {
        if (app.get_option_no_throw(word) != nullptr) return;
        throw Error(
            "there is no option " + kshmi::quoted(word) +
            " in front of a command; \"kshmi --help\" lists the commands, \"kshmi COMMAND --help\" their options");
    }
    std::string list;
    for (const CLI::App* const command : app.get_subcommands([](const CLI::App*) { return true; })) {
        if (command->get_name() == word) return;
        list += (list.empty() ? "" : ", ") + command->get_name();
    }
    throw Error("there is no command " + kshmi::quoted(word) + "; use one of " + list);
}

/// Converting what is no UTF-8 replaces it, and files would keep that.
void requireUtf8(const std::vector<std::string>& words) {
    for (std::size_t i = 0; i < words.size(); ++i) {
        const std::u16string text = toUtf16(words[i]);
        if (toUtf8(text) != words[i])
            throw Error(
                fmt::format("argument {}, {}: has bytes that are no UTF-8; convert it", i + 1, kshmi::quoted(text)));
    }
}

int run(std::vector<std::string> words, const Output& output) {
    requireUtf8(words);
    CLI::App app("Marks signals in model files, lets observers watch them, and tells what is observed", "kshmi");
    Arguments arguments;
    Run command;
    describe(app, arguments, command);
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
        if (!isAskedFor) throw Error(std::string(error.what()) + "; \"kshmi COMMAND --help\" explains it");
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
    } catch (const std::exception& exception) {
        output.err << "kshmi: " << printable(std::string_view(exception.what())) << '\n';
    }
    return kFailure;
}

}  // namespace kshmi
