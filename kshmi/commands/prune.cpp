#include <fmt/format.h>

#include "kshmi/commands/command_options.h"
#include "kshmi/commands/commands.h"
#include "kshmi/commands/finding_kinds.h"
#include "kshmi/print/findings.h"
#include "kshmi/print/json_document.h"
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

FindingKinds kindsOf(const PruneArguments& arguments) {
    FindingKinds kinds = requireKinds(arguments.kinds, isPrunable, "--kinds");
    for (std::size_t i = 0; arguments.kinds.empty() && i < kFindingKinds; ++i)
        kinds[i] = isDead(static_cast<FindingKind>(i));
    return kinds;
}

void printText(const SettledFile& file, const PruneArguments& arguments, std::ostream& out) {
    for (const Settled& one : file.settled)
        out << fmt::format("{} {} ({})\n", arguments.isDryRun ? "would remove" : "removed", printableMessage(one.what),
                           textOf(one.kind));
    FindingCounts counts;
    counts.add(file.now);
    const std::string what = file.settled.empty() ? std::string("nothing to remove")
                             : arguments.isDryRun
                                 ? fmt::format("dry run, {} not made", counted(file.settled.size(), "removal"))
                                 : fmt::format("saved after {}", counted(file.settled.size(), "removal"));
    out << fmt::format("{}: {}; check now: {}\n", printable(std::string_view(arguments.file)), what, textOf(counts));
}

void printJson(const SettledFile& file, const PruneArguments& arguments, std::ostream& out) {
    JsonDocument document("prune");
    document.object().text("file", std::string_view(arguments.file)).truth("dryRun", arguments.isDryRun);
    document.object().truth("saved", !arguments.isDryRun && !file.settled.empty());
    document.list("settled", file.settled, [&](const Settled& one) { appendSettled(document.text(), one); });
    document.print(out);
}

int runPrune(const PruneArguments& arguments, const Output& output) {
    const FindingKinds kinds = kindsOf(arguments);
    kshmi::enterHost(output.err);
    CheckedFile checked = checkFile(arguments.file);
    if (!checked.contents) {
        const Finding& finding = checked.findings.back();
        const bool isUnreadable = finding.code == FindingCode::unreadable;
        throw Error(finding.place, finding.text, isUnreadable ? ErrorCode::file : ErrorCode::format);
    }
    const SettledFile file = settleFile(std::move(checked), Settling::prune, kinds, arguments.isDryRun);
    warnOfSave(arguments.file, file.warnings, output.err);
    arguments.isJson ? printJson(file, arguments, output.out) : printText(file, arguments, output.out);
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
    command->add_flag("--dry-run", arguments->isDryRun, "say what would change and change nothing");
    command->add_flag("--json", arguments->isJson, "print JSON");
    runWith(*command, runPrune, arguments, run);
}

}  // namespace kshmi
