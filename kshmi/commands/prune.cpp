#include <fmt/format.h>

#include <utility>

#include "kshmi/commands/command_options.h"
#include "kshmi/commands/commands.h"
#include "kshmi/commands/finding_kinds.h"
#include "kshmi/print/reports/findings.h"
#include "workbench/check/settling.h"
#include "workbench/text/text.h"

namespace kshmi {

namespace {

using namespace workbench;

struct PruneArguments {
    std::string file;
    std::vector<std::string> kinds;
    bool isDryRun = false;
    bool isJson = false;
};

void printText(const SettledFile& file, const PruneArguments& arguments, std::ostream& out) {
    for (const Settled& one : file.settled)
        out << fmt::format("{} {} ({})\n", arguments.isDryRun ? "would remove" : "removed", printableMessage(one.what),
                           textOf(one.kind));
    FindingCounts counts;
    counts.add(file.now);
    const std::string removals = counted(file.settled.size(), "removal");
    const std::string what = file.settled.empty() ? std::string("nothing to remove")
                             : arguments.isDryRun ? fmt::format("dry run, {} not made", removals)
                                                  : "saved after " + removals;
    const bool isSaved = !file.settled.empty() && !arguments.isDryRun;
    const std::string name = isSaved ? calledWhenSaved(arguments.file) : calledInMessages(arguments.file);
    out << fmt::format("{}: {}; check now: {}\n", printable(std::string_view(name)), what, textOf(counts));
}

[[noreturn]] void refuse(const Finding& finding) {
    const Error error = errorOf(finding);
    ErrorPlace place = error.place();
    place.file = calledInMessages(place.file);
    throw error.at(std::move(place));
}

void print(const SettledFile& file, const PruneArguments& arguments, std::ostream& out) {
    arguments.isJson ? printPruneJson(file, arguments.file, arguments.isDryRun, out) : printText(file, arguments, out);
}

// What is not changed goes on as it came.
int pruneStream(const PruneArguments& arguments, const FindingKinds& kinds, const Output& output) {
    std::string text = readStandardInput();
    CheckedFile checked = checkText(arguments.file, text);
    if (!checked.contents) refuse(checked.findings.back());
    std::string pruned;
    const SettledFile file = settleFile(std::move(checked), Settling::prune, kinds, arguments.isDryRun,
                                        [&](std::string_view piece) { pruned += piece; });
    sendModel(output, pruned.empty() ? text : pruned);
    print(file, arguments, besideModel(output));
    return file.settled.empty() ? kNothing : kSuccess;
}

int runPrune(const PruneArguments& arguments, const Output& output) {
    const FindingKinds kinds = prunedKinds(arguments.kinds, "--kinds");
    kshmi::enterHost(output.err);
    if (arguments.file == kStandardStream) return pruneStream(arguments, kinds, output);
    CheckedFile checked = checkFile(arguments.file);
    if (!checked.contents) refuse(checked.findings.back());
    const SettledFile file = settleFile(std::move(checked), Settling::prune, kinds, arguments.isDryRun);
    warnOfSave(arguments.file, file.warnings, output.err);
    print(file, arguments, output.out);
    return file.settled.empty() ? kNothing : kSuccess;
}

}  // namespace

void addPrune(CLI::App& app, Run& run) {
    const auto arguments = std::make_shared<PruneArguments>();
    CLI::App* const command =
        addCommand(app, "prune", "Remove what \"kshmi check\" finds, by kinds, and save the model",
                   "  kshmi prune cruise.json --dry-run\n"
                   "  kshmi prune cruise.json --kinds gone,dangling\n"
                   "  kshmi prune cruise.json --kinds parked",
                   arguments->file);
    addKinds(*command, "--kinds", arguments->kinds, isPrunable,
             "what to remove (gone, duplicates, dangling and deprecated if left out), with commas between");
    command->get_option("MODEL")->description(kStreamedModel);
    command->add_flag("--dry-run", arguments->isDryRun, "say what would change and change nothing");
    command->add_flag("--json", arguments->isJson, "print JSON");
    runWith(*command, runPrune, arguments, run);
}

}  // namespace kshmi
