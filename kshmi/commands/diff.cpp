#include <cstdlib>

#include "kshmi/commands/command_options.h"
#include "kshmi/commands/commands.h"
#include "kshmi/print/reports/diff_report.h"
#include "workbench/compare/compared_file.h"
#include "workbench/compare/diff.h"
#include "workbench/text/error.h"
#include "workbench/text/text.h"

namespace kshmi {

namespace {

using namespace workbench;

struct DiffArguments {
    std::vector<std::string> files;
    std::string text;
    bool isJson = false;
    bool showsAll = false;
};

// What git calls an external diff with: path, old file, its hash and mode, new file, its hash and mode; two more where
// the file was renamed.
constexpr std::size_t kGitArguments = 7;
constexpr std::size_t kGitRenameArguments = 9;

int tell(const ComparedFiles& files, const std::string& before, const std::string& after,
         const DiffArguments& arguments, const Output& output) {
    const auto [old, next] = readCompared(before, after);
    const ModelDiff diff = diffModels(old, next);
    if (arguments.isJson)
        printDiffJson(diff, files, old, next, output);
    else
        printDiff(diff, files, arguments.showsAll, output);
    return diff.isSame() ? kSuccess : kNothing;
}

// For git, a difference is no failure.
int tellGit(const DiffArguments& arguments, const Output& output) {
    const std::vector<std::string>& words = arguments.files;
    const bool isRename = words.size() == kGitRenameArguments;
    tell({words[0], isRename ? words[kGitArguments] : words[0]}, words[1], words[4], arguments, output);
    return kSuccess;
}

int runDiff(const DiffArguments& arguments, const Output& output) {
    const std::size_t count = arguments.files.size();
    if (!arguments.text.empty()) {
        if (count > 0 || arguments.isJson) throw Error("--text: takes one file and neither others nor --json");
        output.out << comparableText(readModelFile(arguments.text));
        return kSuccess;
    }
    if (count == kGitArguments || count == kGitRenameArguments) return tellGit(arguments, output);
    const bool isUnmerged = count == 1 && std::getenv("GIT_DIFF_PATH_TOTAL") != nullptr;
    if (isUnmerged) {
        output.out << "unmerged " << printable(std::string_view(arguments.files[0])) << '\n';
        return kSuccess;
    }
    if (count != 2) throw Error("give two model files to compare; \"kshmi diff --help\" explains it");
    return tell({arguments.files[0], arguments.files[1]}, arguments.files[0], arguments.files[1], arguments, output);
}

}  // namespace

void addDiff(CLI::App& app, Run& run) {
    const auto arguments = std::make_shared<DiffArguments>();
    CLI::App* const command = app.add_subcommand("diff", "Tell how two model files differ");
    command->footer(
        "Signals and clients are compared by UUID, blocks by element identifier. Ends with 1 when there are "
        "differences.\n"
        "Examples:\n"
        "  kshmi diff cruise_v1.json cruise_v2.json\n"
        "  kshmi diff --text cruise.json\n"
        "  GIT_EXTERNAL_DIFF=\"kshmi diff\" git diff");
    command->add_option("FILE", arguments->files, "two model files; or what git calls an external diff with");
    command->add_option("--text", arguments->text, "print this model file as lines that are easy to compare")
        ->type_name("FILE");
    command->add_flag("--json", arguments->isJson, "print JSON");
    command->add_flag("--all-lines", arguments->showsAll, "print everything, however much it is");
    runWith(*command, runDiff, arguments, run);
}

}  // namespace kshmi
