#include "kshmi/commands/command_options.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <limits>
#include <system_error>

#include "kshmi/print/reports/findings.h"
#include "workbench/check/field_names.h"
#include "workbench/files/standard_stream.h"
#include "workbench/text/error.h"
#include "workbench/text/nearest.h"
#include "workbench/text/text.h"
#include "workbench/values/host_value_builder.h"

namespace kshmi {

using namespace workbench;

namespace {

constexpr std::uint32_t kLargest = std::numeric_limits<std::int32_t>::max();

// A flag and its opposite; neither leaves things as they are.
void addSwitch(CLI::App& command, const std::string& on, const std::string& off, std::optional<bool>& value,
               const std::string& help, const std::string& opposite) {
    CLI::Option* const first = command.add_flag_callback(
        on, [&value] { value = true; }, help);
    command
        .add_flag_callback(
            off, [&value] { value = false; }, opposite)
        ->excludes(first);
}

// For a command line.
std::string fileWord(const std::string& called) {
    const std::string stream(kStandardStream);
    return called == calledInMessages(stream) ? stream : shellWord(called);
}

HvArrayPtr parametersOf(const std::string& json) {
    HvArrayPtr value = hostValueOf("--params", json);
    for (const std::string& name : wrongFieldNames(value.get()))
        throw Error(
            fmt::format("--params: {} cannot be the name of a parameter; start it with a letter and go on with "
                        "letters, digits and \"_\"",
                        inQuotes(std::string_view(name))));
    return value;
}

}  // namespace

CLI::Validator wholeNumber(std::uint32_t least, std::uint32_t most) {
    const std::string range = fmt::format("{} to {}", least, most);
    const auto check = [=](std::string& text) {
        std::uint32_t number = 0;
        const char* const end = text.data() + text.size();
        const auto [stop, code] = std::from_chars(text.data(), end, number);
        if (code != std::errc() || stop != end || number < least || number > most)
            return fmt::format("{}: give a whole number from {}", inQuotes(text), range);
        text = std::to_string(number);
        return std::string();
    };
    return {check, range};
}

CLI::Validator oneOf(const std::vector<std::string>& words) {
    CLI::Validator check = CLI::IsMember(words);
    check.operation([words](std::string& text) {
        if (std::find(words.begin(), words.end(), text) != words.end()) return std::string();
        Nearest nearest(text);
        for (const std::string& word : words) nearest.offer(word);
        return fmt::format("{} is not one of {}{}", inQuotes(text), listed(words), nearest.question());
    });
    return check;
}

CLI::App* addCommand(CLI::App& app, const char* name, const char* help, const char* examples, std::string& file) {
    CLI::App* const command = app.add_subcommand(name, help);
    command->footer(std::string("Examples:\n") + examples);
    command->add_option("MODEL", file, "model file")->required();
    return command;
}

void addChangeOptions(CLI::App& command, ChangeOptions& options) {
    command.get_option("MODEL")->description(kStreamedModel);
    command.add_flag("--dry-run", options.isDryRun, "say what would change and change nothing");
    command.add_flag("--json", options.isJson, "print JSON");
    command.add_flag("--all-lines", options.isAllTold, "print every line, not only the first ones");
}

void addSettings(CLI::App& command, SignalSettings& settings) {
    command.add_option("--name", settings.name,
                       "signal name; of a new one the port's or chart item's name if left out");
    command.add_option("--decimation", settings.decimation, "keep every n-th sample")
        ->transform(wholeNumber(1, kLargest));
    command.add_option("--max-points", settings.maxPoints, "most points to keep; 0 for no limit")
        ->transform(wholeNumber(0, kLargest));
    addSwitch(command, "--frame-based", "--no-frame-based", settings.isFrameBased, "the signal is frame based",
              "it is not");
    addSwitch(command, "--hide", "--show", settings.isHidden, "do not show it in the signal viewer", "show it there");
    addSwitch(command, "--buffered", "--no-buffered", settings.isBuffered, "stream it buffered from the target",
              "do not buffer it");
    addSwitch(command, "--exclude-from-save", "--include-in-save", settings.isExcludedFromSave,
              "leave it out when the model is saved, so the file will not have it", "save it");
    command.add_option("--visual-type", settings.visualType, "kind of display that it feeds");
}

void addClientSettings(CLI::App& command, ClientArguments& arguments) {
    command.add_option("--params", arguments.params, "parameters as JSON, written as in a model file")
        ->type_name("JSON");
    command.add_option("--update-rate", arguments.updateRate, "update rate")->transform(wholeNumber());
    command.add_option("--channel,--dimension", arguments.channel, "which element of the signal")
        ->transform(wholeNumber());
    addSwitch(command, "--imaginary", "--no-imaginary", arguments.isImaginary, "watch the imaginary part",
              "watch the real part");
    command.add_option("--bus-leaf", arguments.busLeaf, "path of the leaf inside a bus signal")->type_name("PATH");
}

ClientSettings settingsOf(const ClientArguments& arguments) {
    if (arguments.type && arguments.type->empty()) throw Error("the kind of client is empty; name it");
    return {arguments.type,        arguments.params ? parametersOf(*arguments.params) : nullptr,
            arguments.updateRate,  arguments.channel,
            arguments.isImaginary, arguments.busLeaf};
}

Output saveModel(const std::string& target, const ModelFile& file, const Output& output,
                 std::optional<FileVersion> replaced) {
    if (target != kStandardStream) {
        warnOfSave(target, writeModelFile(target, file, replaced).warnings, output.err);
        return output;
    }
    sendModel(output, modelText(file));
    return {.out = besideModel(output), .err = output.err, .models = &modelStream(output)};
}

void requireOneInput(const std::vector<std::string>& files, const std::vector<std::string>& lists) {
    if (std::count(files.begin(), files.end(), kStandardStream) +
            std::count(lists.begin(), lists.end(), kStandardStream) >
        1)
        throw Error("standard input (-) is named twice; it can be read only once");
}

void requireNoFiles(const std::vector<std::string>& references) {
    for (const std::string& reference : references)
        if (reference.ends_with(".json") && std::filesystem::is_regular_file(reference))
            throw Error(inQuotes(reference) + ": is a file; this command works on one model at a time");
}

int inFile(const std::string& file, const std::function<int()>& work) {
    try {
        return work();
    } catch (const Error& error) {
        const bool namesOption = error.text().starts_with("--");
        if (!error.place().file.empty() || namesOption) throw;
        throw error.at({calledInMessages(file)});
    }
}

std::string messageOf(const Error& error) {
    const std::string file = fileWord(error.place().file);
    switch (error.remedy()) {
        case Remedy::listBlocks:
            return fmt::format("{}; \"kshmi show\" lists them", error.what());
        case Remedy::listSignals:
            return fmt::format("{}; \"kshmi show\" lists the signals", error.what());
        case Remedy::listClients:
            return fmt::format("{}; \"kshmi clients\" lists them", error.what());
        case Remedy::usePatterns:
            return fmt::format("{}; a name is taken literally here: for a pattern give --all 'GLOB'", error.what());
        case Remedy::unmark:
            return fmt::format("{}; give --unmark to remove that, too", error.what());
        case Remedy::removeBelow:
            return fmt::format("{}; give --recursive to remove all of it", error.what());
        case Remedy::nameUnit:
            return fmt::format("{}; name the .fmu with --fmu", error.what());
        case Remedy::replaceFile:
            return fmt::format("{}, or --replace to have it replaced", error.what());
        case Remedy::updateFile:
            return fmt::format("{}, or --update to import the next version onto it", error.what());
        case Remedy::carryMarks:
            return fmt::format("{}; import to a new file with --previous {} and carry them over with \"kshmi carry\"",
                               error.what(), file);
        case Remedy::removeDangling:
            return fmt::format("{}, or remove such signals with \"kshmi unmark {} --dangling\"", error.what(), file);
        case Remedy::settleNames:
            return fmt::format(
                "{}; let marks whose name is still there follow it with \"kshmi check {} --mend names\", or accept "
                "what is there with "
                "\"kshmi set {} REF --confirm\"",
                error.what(), file, file);
        case Remedy::none:
            break;
    }
    return error.what();
}

}  // namespace kshmi
