#include <fmt/format.h>

#include <algorithm>
#include <functional>
#include <optional>

#include "kshmi/commands/command_options.h"
#include "kshmi/commands/commands.h"
#include "kshmi/commands/finding_kinds.h"
#include "kshmi/print/reports/findings.h"
#include "kshmi/print/reports/sarif.h"
#include "workbench/check/settling.h"
#include "workbench/files/standard_stream.h"
#include "workbench/json/json_object.h"
#include "workbench/text/error.h"
#include "workbench/text/text.h"

namespace kshmi {

namespace {

using namespace workbench;

struct CheckArguments {
    std::vector<std::string> files;
    std::vector<std::string> mend;
    std::string failOn = "error";
    bool isDryRun = false;
    bool isJson = false;
    bool isSarif = false;
};

// One file after the other: what was found in one is gone before the next is read.
class Check {
public:
    Check(const CheckArguments& arguments, const Output& output)
        : m_arguments(arguments), m_output(output), m_kinds(findingKindsCalled(arguments.mend, isMendable, "--mend")) {}

    int run() {
        begin();
        for (std::size_t i = 0; i < m_arguments.files.size(); ++i) {
            if (i > 0 && m_arguments.isJson) m_output.out << ",\n  ";
            checkOne(m_arguments.files[i]);
        }
        end();
        const bool isFound = m_counts.errors > 0 || (m_arguments.failOn == "warning" && m_counts.warnings > 0);
        return m_worst != kSuccess ? m_worst : isFound ? kFound : kSuccess;
    }

private:
    void begin() {
        if (m_arguments.isSarif) m_sarif.emplace(m_output.out);
        if (m_arguments.isJson) m_output.out << "{\"kshmi\": 1, \"command\": \"check\", \"files\": [\n  ";
    }

    void checkOne(const std::string& path) {
        tellProgress(m_output, "checking " + printable(std::string_view(path)));
        SettledFile file{{}, checkFile(path), {}};
        if (!file.now.isReadable()) m_worst = kBadFile;
        if (m_kinds.any()) mendOne(path, file);
        m_counts.add(file.now);
        if (m_sarif) return m_sarif->add(file.now);
        if (m_arguments.isJson) return printJson(file);
        for (const Settled& one : file.settled)
            m_output.out << fmt::format("{}: {} {}\n", printable(std::string_view(path)),
                                        m_arguments.isDryRun ? "would mend" : "mended", printableMessage(one.what));
        printFindings(file.now, m_output.out);
    }

    // What cannot be mended is told, and the other files still are.
    void mendOne(const std::string& path, SettledFile& file) {
        try {
            file = settleFile(std::move(file.now), Settling::mend, m_kinds, m_arguments.isDryRun);
            warnOfSave(path, file.warnings, m_output.err);
        } catch (const Error& error) {
            m_output.err << "kshmi: " << printableMessage(messageOf(error)) << '\n';
            m_worst = exitCodeOf(error);
            file = {{}, checkFile(path), {}};
        }
    }

    void printJson(const SettledFile& file) {
        std::string text;
        appendCheckedFile(text, file.now, file.settled);
        m_output.out << printableJson(text);
    }

    void end() {
        if (m_sarif) return m_sarif->close();
        const std::size_t count = m_arguments.files.size();
        if (!m_arguments.isJson) {
            m_output.out << fmt::format("{}: {}\n", counted(count, "file"), textOf(m_counts));
            return;
        }
        m_output.out << fmt::format("\n], \"errors\": {}, \"warnings\": {}, \"notes\": {}, \"dryRun\": {}}}\n",
                                    m_counts.errors, m_counts.warnings, m_counts.notes, m_arguments.isDryRun);
    }

    static constexpr int kFound = 1;

    const CheckArguments& m_arguments;
    const Output& m_output;
    FindingKinds m_kinds;
    FindingCounts m_counts;
    std::optional<SarifLog> m_sarif;
    int m_worst = kSuccess;
};

int runCheck(const CheckArguments& arguments, const Output& output) {
    if (arguments.isDryRun && arguments.mend.empty())
        throw Error("--dry-run is for --mend; a check alone changes nothing");
    if (!arguments.mend.empty() && std::ranges::count(arguments.files, kStandardStream) != 0)
        throw Error("standard input cannot be mended, the findings go to the output; name a file to mend it in");
    kshmi::enterHost(output.err);
    return Check(arguments, output).run();
}

}  // namespace

void addCheck(CLI::App& app, Run& run) {
    const auto arguments = std::make_shared<CheckArguments>();
    CLI::App* const command = app.add_subcommand(
        "check", "Look for what is wrong in model files, or may go wrong; exit 1 if there is an error");
    command->footer(
        "Examples:\n"
        "  kshmi check cruise.json\n"
        "  kshmi check cruise.json plant.json --fail-on warning\n"
        "  kshmi check cruise.json --mend names,uuids --dry-run\n"
        "  kshmi check cruise.json plant.json --sarif > findings.sarif");
    command->add_option("MODEL", arguments->files, "model files")->required();
    addKinds(*command, "--mend", arguments->mend, isMendable,
             "mend what is found, by kinds with commas between, and save");
    command->add_flag("--dry-run", arguments->isDryRun, "say what would change and change nothing");
    command->add_option("--fail-on", arguments->failOn, "exit 1 from this level on: warning or error")
        ->check(oneOf({"warning", "error"}))
        ->capture_default_str();
    CLI::Option* const json = command->add_flag("--json", arguments->isJson, "print JSON");
    command->add_flag("--sarif", arguments->isSarif, "print a SARIF 2.1.0 log, for code hosts")->excludes(json);
    runWith(*command, runCheck, arguments, run);
}

}  // namespace kshmi
