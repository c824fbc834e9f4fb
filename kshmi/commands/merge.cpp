#include <fmt/format.h>

#include "kshmi/commands/command_options.h"
#include "kshmi/commands/commands.h"
#include "kshmi/print/reports/diff_report.h"
#include "workbench/compare/compared_file.h"
#include "workbench/text/text.h"

namespace kshmi {

namespace {

using namespace workbench;

struct MergeArguments {
    std::string base, ours, theirs, output;
    std::string name;  // in messages
    bool isJson = false;
    bool showsAll = false;
    bool isDryRun = false;
};

int runMerge(const MergeArguments& arguments, const Output& output) {
    const MergedModel merged = mergeFiles(arguments.base, arguments.ours, arguments.theirs);
    const Output beside = arguments.isDryRun ? output : saveModel(arguments.output, merged.file, output);
    const std::string name = arguments.name.empty() ? calledWhenSaved(arguments.output) : arguments.name;
    if (arguments.isJson)
        printMergeJson(merged, arguments.name.empty() ? arguments.output : name, arguments.isDryRun, beside);
    else
        printConflicts(merged, name, arguments.showsAll, beside);
    if (!arguments.isJson && merged.conflicts.empty())
        beside.out << fmt::format("{}: {}{} and {}\n", printable(std::string_view(name)),
                                  arguments.isDryRun ? "dry run, not saved; would have " : "merged, with ",
                                  counted(hvGetNumberOfElements(merged.file.signals.get()), "signal"),
                                  counted(hvGetNumberOfElements(merged.file.clients.get()), "client"));
    return merged.conflicts.empty() ? kSuccess : kNothing;
}

}  // namespace

void addMerge(CLI::App& app, Run& run) {
    const auto arguments = std::make_shared<MergeArguments>();
    CLI::App* const command =
        app.add_subcommand("merge", "Bring together what two people changed in copies of one model file");
    command->footer(
        "Where both changed the same field differently, ours stays, and the conflict is listed; the command then "
        "ends with 1.\n"
        "Examples:\n"
        "  kshmi merge base.json ours.json theirs.json -o merged.json\n"
        "  git config merge.kestrel.driver \"kshmi merge %O %A %B -o %A --path %P\"");
    command->add_option("BASE", arguments->base, "the file that both come from; an empty one when there is none")
        ->required();
    command->add_option("OURS", arguments->ours, "one changed file, which wins conflicts")->required();
    command->add_option("THEIRS", arguments->theirs, "the other changed file")->required();
    command
        ->add_option("-o,--output", arguments->output,
                     "the file to write, which may be one of the three; - is the standard output")
        ->type_name("FILE")
        ->required();
    command
        ->add_option("--path", arguments->name,
                     "what to call the file in what is told, where the three are copies of it; git has it as %P")
        ->type_name("FILE");
    command->add_flag("--json", arguments->isJson, "print JSON");
    command->add_flag("--all-lines", arguments->showsAll, "print everything, however much it is");
    command->add_flag("--dry-run", arguments->isDryRun, "say what would change and change nothing");
    runWith(*command, runMerge, arguments, run);
}

}  // namespace kshmi
