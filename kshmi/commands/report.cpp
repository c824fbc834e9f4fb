#include <fmt/format.h>

#include <optional>
#include <string>

#include "kshmi/commands/command_options.h"
#include "kshmi/commands/commands.h"
#include "kshmi/print/reports/findings.h"
#include "kshmi/print/reports/page_report.h"
#include "report/page_file.h"
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

// Says how many bytes they were.
std::size_t write(const ReportArguments& arguments, const report::Contents& contents, const Output& output) {
    if (arguments.target != kStandardStream) {
        const report::WrittenPage page = report::writePageFile(arguments.target, contents);
        warnOfSave(arguments.target, page.warnings, output.err);
        return page.bytes;
    }
    std::size_t size = 0;
    report::writePage(contents, [&](std::string_view piece) { output.out << piece, size += piece.size(); });
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

int runReport(const ReportArguments& arguments, const Output& output) {
    if (arguments.isJson && arguments.target == kStandardStream)
        throw Error("--json: standard output has the page already; give -o a file");
    requireOneInput({arguments.file, arguments.run}, {});
    kshmi::enterHost(output.err);
    report::PageSource source(arguments.file);
    if (!arguments.run.empty()) {
        tellProgress(output, "reading " + printable(std::string_view(arguments.run)));
        const auto& number = arguments.runNumber;
        source.addRun(arguments.run, number ? std::optional(static_cast<int>(*number)) : std::nullopt);
    }
    const report::Contents contents = source.contents(remedyOnPage);
    const std::size_t size = write(arguments, contents, output);
    if (arguments.isJson)
        printPageJson(source.session(), source.checked(), source.run(), arguments.target, size, output.out);
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
                   "  kshmi record cruise.json --fmu cruise.fmu | kshmi report cruise.json --run - -o cruise.html\n"
                   "  kshmi report cruise.json -o - > cruise.html",
                   arguments->file);
    command->add_option("-o,--output", arguments->target, "page to write; \"-\" is standard output")
        ->type_name("FILE")
        ->required();
    CLI::Option* const runOption =
        command
            ->add_option("--run", arguments->run,
                         "what was recorded, to be plotted: CSV or SQLite; - is CSV on standard input")
            ->type_name("FILE");
    command->add_option("--run-number", arguments->runNumber, "which run of the file; the last one if left out")
        ->transform(wholeNumber(1, std::numeric_limits<std::int32_t>::max()))
        ->type_name("N")
        ->needs(runOption);
    command->add_flag("--json", arguments->isJson, "print JSON");
    runWith(*command, runReport, arguments, run);
}

}  // namespace kshmi
