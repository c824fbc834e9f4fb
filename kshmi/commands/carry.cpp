#include "kshmi/commands/command_options.h"
#include "kshmi/commands/commands.h"
#include "kshmi/print/reports/carry_report.h"
#include "workbench/carry/carry_files.h"

namespace kshmi {

namespace {

using namespace workbench;

struct CarryArguments {
    CarryFiles files;
    std::string match;
    CarryOptions options;
    bool isJson = false;
    bool showsAll = false;
    bool isDryRun = false;
};

// Returns where to tell of it.
Output save(const CarryArguments& arguments, const CarriedFiles& done, const Output& output) {
    std::optional<Output> beside;
    saveWithProposal(arguments.files, done.carried.report, [&] {
        if (!arguments.isDryRun)
            beside.emplace(saveModel(arguments.files.target(), done.carried.file, output, done.replaced));
    });
    return beside ? *beside : output;
}

int runCarry(const CarryArguments& arguments, const Output& output) {
    CarryOptions options = arguments.options;
    if (!arguments.match.empty()) options.by = arguments.match == "id" ? MatchBy::identifier : MatchBy::path;
    const CarriedFiles done = carryFiles(arguments.files, options);
    const CarryReport& report = done.carried.report;
    const Output beside = save(arguments, done, output);
    const CarryRun told{arguments.files.before, arguments.files.after, arguments.files.target(),
                        done.oldModel,          done.newModel,         arguments.isDryRun};
    if (arguments.isJson)
        printCarryJson(report, told, beside);
    else
        printCarry(report, told, arguments.showsAll, beside);
    return report.isAllCarried() ? kSuccess : kNothing;
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
    command->add_option("OLD", arguments->files.before, "model file with the marks; it stays as it is")->required();
    command
        ->add_option("NEW", arguments->files.after,
                     "the next version: a model file without marks, or .ssd, .ssp, .xml, .fmu")
        ->required();
    command
        ->add_option("-o,--output", arguments->files.output,
                     "model file to write, - for the standard output; NEW itself if left out")
        ->type_name("FILE");
    command->add_option("--map", arguments->files.map, "CSV file of old and new names of blocks, ports and a/b/*")
        ->type_name("FILE");
    command
        ->add_option("--propose", arguments->files.proposal,
                     "write such a file for what is not certain, also in a dry run")
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
