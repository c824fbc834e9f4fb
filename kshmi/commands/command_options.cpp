#include "kshmi/commands/command_options.h"

#include <fmt/format.h>

#include <charconv>
#include <system_error>

#include "workbench/text/error.h"
#include "workbench/text/text.h"

namespace kshmi {

using namespace workbench;

namespace {

constexpr const char* kReferenceHelp =
    "block/path:port (number or name, 1 if left out), chart/State, chart/datum, or a chart with --activity or --ssid; "
    "the model's name may stand in front. Beside a block named \"a:1\", \"a:1\" is that block: call port 1 of \"a\" "
    "\"a\" or by its name";

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

CLI::App* addCommand(CLI::App& app, const char* name, const char* help, const char* examples, std::string& file) {
    CLI::App* const command = app.add_subcommand(name, help);
    command->footer(std::string("Examples:\n") + examples);
    command->add_option("MODEL", file, "model file")->required();
    return command;
}

CLI::Option* addReferences(CLI::App& command, std::vector<std::string>& references) {
    return command.add_option("REF", references, kReferenceHelp);
}

void addReferenceOptions(CLI::App& command, ReferenceOptions& options) {
    command
        .add_option("--activity", options.activity, "activity of a chart item: Self, Child or Leaf; Data of a datum")
        ->check(CLI::IsMember({"Self", "Child", "Leaf", "Data"}));
    command.add_option("--ssid", options.ssid, "the chart item's identifier within its chart; 0 is the chart itself")
        ->transform(wholeNumber());
}

void addPatterns(CLI::App& command, Selection& selection) {
    command.add_option("--all", selection.all, "everything whose full path matches the pattern; may be repeated")
        ->type_name("GLOB")
        ->allow_extra_args(false);
    command.add_option("--except", selection.except, "but not what matches this one; may be repeated")
        ->type_name("GLOB")
        ->allow_extra_args(false);
}

void addDryRun(CLI::App& command, bool& isDryRun) {
    command.add_flag("--dry-run", isDryRun, "say what would change and change nothing");
}

int inFile(const std::string& file, const std::function<int()>& work) {
    try {
        return work();
    } catch (const Error& error) {
        const bool namesOption = error.text().starts_with("--");
        if (!error.place().file.empty() || namesOption) throw;
        throw error.at({file, 0, {}});
    }
}

std::string messageOf(const Error& error) {
    switch (error.remedy()) {
        case Remedy::listBlocks:
            return fmt::format("{}; \"kshmi show\" lists them", error.what());
        case Remedy::removeDangling:
            return fmt::format("{}, or remove such signals with \"kshmi unmark {} --dangling\"", error.what(),
                               error.place().file);
        case Remedy::none:
            break;
    }
    return error.what();
}

}  // namespace kshmi
