#include "workbench/compare/carry.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string_view>

#include "kshmi/commands/command_options.h"
#include "kshmi/commands/commands.h"
#include "kshmi/print/carry_report.h"
#include "workbench/files/atomic_file.h"
#include "workbench/import/import_model.h"
#include "workbench/text/error.h"

namespace kshmi {

namespace {

using namespace workbench;

struct CarryArguments {
    std::string before, after, output, map, proposal;
    std::string match;
    CarryOptions options;
    bool isJson = false;
    bool showsAll = false;
    bool isDryRun = false;
};

bool isForeign(const std::string& path) {
    const std::string ending = std::filesystem::path(path).extension().string();
    constexpr std::array<std::string_view, 4> kEndings{".ssd", ".ssp", ".xml", ".fmu"};
    return std::ranges::find(kEndings, ending) != kEndings.end();
}

ModelFile nextVersion(const CarryArguments& arguments, const ModelFile& old) {
    if (!isForeign(arguments.after)) return readModelFile(arguments.after);
    if (arguments.output.empty()) throw Error("--output: is missing; an import needs a model file to go to");
    ImportOptions options;
    options.previous = &old;
    ImportedModel imported = importFile(arguments.after, arguments.output, options);
    ModelFile file = newModelFile(imported.model.name());
    file.model = std::move(imported.model);
    file.extras.origin = std::move(imported.origin);
    return file;
}

CarryMap readMap(const std::string& path, const ModelFile& old, const kestrel::Model& next) {
    if (path.empty()) return {};
    std::ifstream file(path, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    if (!file) throw Error({path}, "cannot be read; check the name and the permissions", ErrorCode::file);
    return CarryMap(path, text, old, next);
}

// First what can fail without having changed anything.
Output save(const CarryArguments& arguments, const CarriedModel& carried, const std::string& target,
            const Output& output) {
    std::optional<AtomicFile> proposal;
    if (!arguments.proposal.empty()) {
        proposal.emplace(AtomicFile::kNew, arguments.proposal);
        proposal->write(proposedMap(carried.report));
    }
    const bool isInPlace = target == arguments.after;
    const Output beside =
        arguments.isDryRun ? output
                           : saveModel(target, carried.file, output, isInPlace ? carried.file.version : std::nullopt);
    if (proposal) proposal->commit();
    return beside;
}

CarriedModel carryTo(const std::string& file, const ModelFile& old, ModelFile next, const CarryOptions& options,
                     const CarryMap& map) {
    try {
        return carryMarks(old, std::move(next), options, map);
    } catch (const Error& error) {
        throw error.at({file});
    }
}

int runCarry(const CarryArguments& arguments, const Output& output) {
    const ModelFile old = readModelFile(arguments.before);
    ModelFile next = nextVersion(arguments, old);
    const CarryMap map = readMap(arguments.map, old, next.model);
    CarryOptions options = arguments.options;
    if (!arguments.match.empty()) options.by = arguments.match == "id" ? MatchBy::identifier : MatchBy::path;
    const std::string target = arguments.output.empty() ? arguments.after : arguments.output;
    const std::u16string newName = next.model.name();
    const CarriedModel carried = carryTo(arguments.after, old, std::move(next), options, map);
    const Output beside = save(arguments, carried, target, output);
    const CarryRun told{arguments.before, arguments.after, target, old.model.name(), newName, arguments.isDryRun};
    if (arguments.isJson)
        printCarryJson(carried.report, told, beside);
    else
        printCarry(carried.report, told, arguments.showsAll, beside);
    return carried.report.isAllCarried() ? kSuccess : kNothing;
}

}  // namespace

void addCarry(CLI::App& app, Run& run) {
    const auto arguments = std::make_shared<CarryArguments>();
    CLI::App* const command =
        app.add_subcommand("carry", "Put the marks of one version of a model on the next version");
    command->footer(
        "Ports are found by name, never by number; blocks by identifier and path, renamed ones by what they have in "
        "common. What is certain is done. What is a guess, and what is gone, is parked in the new file with its "
        "clients, told, and comes back when a later version has it again; the command then ends with 1.\n"
        "Examples:\n"
        "  kshmi carry cruise_v1.json cruise_v2.json -o cruise.json\n"
        "  kshmi carry cruise.json engine_v2.fmu -o cruise_v2.json\n"
        "  kshmi carry cruise_v1.json cruise_v2.json --dry-run --propose map.csv\n"
        "  kshmi carry cruise_v1.json cruise_v2.json --map map.csv");
    command->add_option("OLD", arguments->before, "model file with the marks; it stays as it is")->required();
    command
        ->add_option("NEW", arguments->after, "the next version: a model file without marks, or .ssd, .ssp, .xml, .fmu")
        ->required();
    command->add_option("-o,--output", arguments->output,
                        "model file to write, - for the standard output; NEW itself if left out");
    command->add_option("--map", arguments->map, "CSV file of old and new names of blocks, ports and a/b/*")
        ->type_name("FILE");
    command
        ->add_option("--propose", arguments->proposal, "write such a file for what is not certain, also in a dry run")
        ->type_name("FILE");
    command->add_flag("--accept", arguments->options.acceptsGuesses, "do what is a guess, too");
    command->add_option("--match", arguments->match, "how blocks are found; by both if left out, and they must agree")
        ->check(oneOf({"id", "path"}));
    command->add_flag("--json", arguments->isJson, "print JSON");
    command->add_flag("--all-lines", arguments->showsAll, "print everything, however much it is");
    command->add_flag("--dry-run", arguments->isDryRun, "say what would change and change nothing");
    runWith(*command, runCarry, arguments, run);
}

}  // namespace kshmi
