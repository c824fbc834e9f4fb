#include <fmt/format.h>

#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <system_error>

#include "kshmi/commands/command_options.h"
#include "kshmi/commands/commands.h"
#include "kshmi/print/findings.h"
#include "kshmi/print/json_document.h"
#include "report/page.h"
#include "workbench/check/check_file.h"
#include "workbench/files/atomic_file.h"
#include "workbench/record/recorded_run.h"
#include "workbench/session/session.h"
#include "workbench/text/error.h"
#include "workbench/text/text.h"

namespace kshmi {

namespace {

using namespace workbench;

struct ReportArguments {
    std::string file;
    std::string target;
    std::string run;
    std::optional<std::uint32_t> runNumber;
    bool isJson = false;
};

// What a page is written over is a page, or the user has mistaken one name for another.
void requirePage(const std::string& path) {
    constexpr std::string_view kStart = "<!DOCTYPE html>";
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(path, ignored)) return;
    std::ifstream file(path, std::ios::binary);
    std::string start(kStart.size(), '\0');
    file.read(start.data(), static_cast<std::streamsize>(start.size()));
    start.resize(static_cast<std::size_t>(file.gcount()));
    if (!start.empty() && start != kStart)
        throw Error({path}, "exists already and is not a page; give another name", ErrorCode::file);
}

// Hands the pieces of the page on and says how many bytes they were.
std::size_t write(const ReportArguments& arguments, const report::Contents& contents, const Output& output) {
    std::size_t size = 0;
    if (arguments.target == kStandardStream) {
        report::writePage(contents, [&](std::string_view piece) { output.out << piece, size += piece.size(); });
        return size;
    }
    requirePage(arguments.target);
    AtomicFile file(arguments.target);
    report::writePage(contents, [&](std::string_view piece) { file.write(piece), size += piece.size(); });
    file.commit();
    warnOfSave(arguments.target, file.warnings(), output.err);
    return size;
}

void tell(const ReportArguments& arguments, const report::Contents& contents, std::size_t size, const Output& output) {
    const Session& session = contents.session;
    FindingCounts findings;
    findings.add(contents.checked);
    output.out << fmt::format("{}: {}, {}, {}; {}; {} KB\n", printable(std::string_view(arguments.target)),
                              counted(session.model().blocks().size(), "block"),
                              counted(session.signals().getCount(), "signal"),
                              counted(session.clients().getCount(), "client"), textOf(findings), (size + 999) / 1000);
}

void tellJson(const ReportArguments& arguments, const report::Contents& contents, std::size_t size,
              const Output& output) {
    const Session& session = contents.session;
    const CheckedFile& checked = contents.checked;
    JsonDocument document("report");
    JsonObject& object = document.object();
    object.text("file", arguments.target).text("model", session.model().name()).number("bytes", size);
    object.number("blocks", session.model().blocks().size()).number("signals", session.signals().getCount());
    object.number("clients", session.clients().getCount()).number("errors", checked.count(FindingLevel::error));
    object.number("warnings", checked.count(FindingLevel::warning)).number("notes", checked.count(FindingLevel::note));
    if (contents.run != nullptr) object.number("recorded", contents.run->columns.size());
    document.print(output.out);
}

// The page may be read where the file has another folder.
std::string remedyOnPage(const Finding& finding) {
    Finding here = finding;
    here.place.file = std::filesystem::path(finding.place.file).filename().string();
    return remedyOf(here);
}

// What cannot be read at all is refused; whatever else is wrong stands on the page.
ModelFile contentsOf(CheckedFile& checked) {
    if (!checked.contents) throw errorOf(checked.findings.front());
    ModelFile contents = std::move(*checked.contents);
    checked.contents.reset();
    return contents;
}

std::optional<RecordedRun> runOf(const ReportArguments& arguments, const Session& session, const Output& output) {
    if (arguments.run.empty()) return std::nullopt;
    tellProgress(output, "reading " + printable(std::string_view(arguments.run)));
    const auto number = arguments.runNumber ? std::optional(static_cast<int>(*arguments.runNumber)) : std::nullopt;
    RecordedRun run = readRecordedRun(arguments.run, number);
    identifyColumns(run, session);
    return run;
}

int runReport(const ReportArguments& arguments, const Output& output) {
    if (arguments.isJson && arguments.target == kStandardStream)
        throw Error("--json: standard output has the page already; give -o a file");
    kshmi::enterHost(output.err);
    CheckedFile checked = checkFile(arguments.file);
    ModelFile file = contentsOf(checked);
    const Session session(arguments.file, std::move(file), Session::Opening::anyhow);
    const std::optional<RecordedRun> run = runOf(arguments, session, output);
    const report::Contents contents{session, checked, remedyOnPage, run ? &*run : nullptr};
    const std::size_t size = write(arguments, contents, output);
    if (arguments.isJson)
        tellJson(arguments, contents, size, output);
    else if (arguments.target != kStandardStream)
        tell(arguments, contents, size, output);
    return kSuccess;
}

}  // namespace

void addReport(CLI::App& app, Run& run) {
    const auto arguments = std::make_shared<ReportArguments>();
    CLI::App* const command =
        addCommand(app, "report", "Make one HTML page of a model: what is marked, who watches it, what is wrong",
                   "  kshmi report cruise.json -o cruise.html\n"
                   "  kshmi report cruise.json --run run.csv -o cruise.html\n"
                   "  kshmi report cruise.json -o - > cruise.html",
                   arguments->file);
    command->add_option("-o,--output", arguments->target, "page to write; \"-\" is standard output")
        ->type_name("FILE")
        ->required();
    CLI::Option* const runOption =
        command->add_option("--run", arguments->run, "what was recorded: CSV or SQLite, to be plotted")
            ->type_name("FILE");
    command->add_option("--run-number", arguments->runNumber, "which run of the file; the last one if left out")
        ->transform(wholeNumber(1, std::numeric_limits<std::int32_t>::max()))
        ->type_name("N")
        ->needs(runOption);
    command->add_flag("--json", arguments->isJson, "print JSON");
    runWith(*command, runReport, arguments, run);
}

}  // namespace kshmi
