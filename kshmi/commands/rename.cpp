#include <fmt/format.h>

#include "host/values.h"
#include "kshmi/commands/command_options.h"
#include "kshmi/commands/commands.h"
#include "kshmi/print/json/structure_records.h"
#include "kshmi/print/reports/change_report.h"
#include "kshmi/print/reports/findings.h"
#include "memory_host/kestrel/host_side.h"
#include "workbench/change/renaming.h"
#include "workbench/find/reference.h"
#include "workbench/text/error.h"
#include "workbench/text/text.h"

namespace kshmi {

namespace {

using namespace workbench;

struct RenameArguments {
    std::string file;
    std::vector<std::string> names;  // one after the other
    bool isModelMeant = false;       // although a block has such a name
    ChangeOptions options;
};

ChangeReport::Members membersOf(const std::u16string& from, const std::u16string& name) {
    return [=](JsonObject& object) { appendModel(object, name, from); };
}

void tellClients(const Renamed& done, ChangeReport& report) {
    const std::string renamed = fmt::format("renamed in clients: {} and {}", counted(done.sourceModels, "source model"),
                                            counted(done.parameters, "\"ModelName\" parameter"));
    report.note("  would be " + renamed, "  " + renamed);
}

void tellManager(const std::vector<std::string>& received, bool isKnownName, ChangeReport& report) {
    const auto note = [&](const char* would, const char* did, const std::string& what) {
        const auto sentence = [&](const char* verb) { return fmt::format("  the interface manager {}{}", verb, what); };
        report.note(sentence(would), sentence(did));
    };
    for (const std::string& line : received) note("would receive ", "received ", line);
    if (!received.empty()) return;
    note("would not be told", "is not told", isKnownName ? ": the set was last known by this name" : "");
}

// Who gives a block's name most likely wants to rename that block.
void requireNoBlock(const Session& session, const RenameArguments& arguments) {
    if (arguments.isModelMeant) return;
    for (const std::string& name : arguments.names) {
        const std::u16string path = withoutModel(session.model(), name);
        if (!session.model().findByPath(path)) continue;
        throw Error(
            fmt::format("{} is a block, and this renames the model; \"kshmi move {} {} NEW-PATH\" renames the "
                        "block; --model gives the model that name all the same",
                        inQuotes(name), shellWord(arguments.file), shellWord(toUtf8(path))));
    }
}

int runRename(const RenameArguments& arguments, const Output& output) {
    kshmi::enterHost(output.err);
    Session session(arguments.file);
    requireNoBlock(session, arguments);
    std::vector<std::u16string> names;
    for (const std::string& name : arguments.names) names.push_back(requireModelName(name));
    // Nothing is validated in between, so the set is known by this name throughout.
    const std::u16string knownName = session.model().name();
    ChangeReport report(output, "rename", arguments.options, session);
    for (const std::u16string& name : names) {
        const std::u16string oldName = session.model().name();
        if (name == oldName) {
            report.keep(Fate::unchanged, "already named " + printable(name), membersOf(oldName, name));
            continue;
        }
        const Renamed done = renameModel(session, name);
        report.change(Fate::changed, "rename", "renamed", fmt::format("{} to {}", printable(oldName), printable(name)),
                      membersOf(oldName, name));
        tellClients(done, report);
        tellManager(done.received, name == knownName, report);
    }
    return report.finish();
}

}  // namespace

void addRename(CLI::App& app, Run& run) {
    const auto arguments = std::make_shared<RenameArguments>();
    CLI::App* const command =
        addCommand(app, "rename", "Give a model a new name, tell the interface manager, and save the model",
                   "  kshmi rename cruise.json cruise_v2\n"
                   "  kshmi rename cruise.json draft final  # two renames without a validation in between",
                   arguments->file);
    command
        ->add_option("NEW-NAME", arguments->names,
                     "new name; several are given one after the other; a name that starts with \"-\" goes after \"--\"")
        ->required();
    command->add_flag("--model", arguments->isModelMeant, "rename the model although a block has such a name");
    addChangeOptions(*command, arguments->options);
    runWith(*command, runRename, arguments, run);
}

}  // namespace kshmi
