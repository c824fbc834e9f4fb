#include "workbench/record/record_model.h"

#include <fmt/format.h>

#include <charconv>
#include <cmath>
#include <limits>

#include "kshmi/commands/command_options.h"
#include "kshmi/commands/commands.h"
#include "kshmi/commands/stop_requests.h"
#include "kshmi/print/reports/name_notice.h"
#include "kshmi/print/reports/record_report.h"

namespace kshmi {

namespace {

using namespace workbench;

struct RecordArguments {
    std::string file;
    std::string output{kStandardStream};
    std::vector<std::string> values;
    RecordOptions options;
    bool isJson = false;
    bool isQuiet = false;
};

// Lets a finite number pass.
CLI::Validator seconds(const char* wanted, double least) {
    const auto check = [=](const std::string& text) {
        double number = 0.0;
        const char* const end = text.data() + text.size();
        const auto [stop, code] = std::from_chars(text.data(), end, number);
        const bool isNumber = code == std::errc() && stop == end && std::isfinite(number) && number >= least;
        return isNumber ? std::string() : fmt::format("{}: {}", inQuotes(text), wanted);
    };
    return {check, ""};
}
CLI::Validator anySeconds() { return seconds("give a number of seconds", std::numeric_limits<double>::lowest()); }

// "NAME=VALUE"; names may hold anything but '='.
std::pair<std::string, std::string> valueOf(const std::string& text) {
    const std::size_t end = text.find('=');
    if (end == std::string::npos || end == 0)
        throw Error({"--set"}, inQuotes(text) + " is not NAME=VALUE", ErrorCode::request);
    return {text.substr(0, end), text.substr(end + 1)};
}

void listen(RecordOptions& options, const Output& output) {
    options.target.sink = [&output](std::string_view rows) {
        output.out << rows << std::flush;
        if (!output.out) throw Error({"standard output"}, "cannot be written", ErrorCode::file);
    };
    options.warning = [&output](const std::string& text) { output.err << "kshmi: warning: " << text << '\n'; };
    options.log = [&output](double time, UnitLogLevel level, std::string_view category, std::string_view text) {
        output.err << fmt::format("{} [{}] {}{}{}\n", timeText(time), nameOf(level), printable(category),
                                  category.empty() ? "" : ": ", printable(text));
    };
    options.progress = [&output](const RunProgress& run) {
        tellProgress(output, fmt::format("{} of {:.10g} s{}", timeText(run.time), run.until,
                                         ratioText(run.time - run.start, run.seconds)));
    };
    options.control.stopRequests = StopRequests::count;
}

void tell(const RecordArguments& arguments, const RecordResult& result, const Session& session, const Output& output) {
    if (arguments.isJson)
        printRecordJson(result, arguments.output, session, output.out);
    else if (!arguments.isQuiet)
        printRecord(result, arguments.output == kStandardStream ? "standard output" : arguments.output,
                    arguments.output == kStandardStream ? output.err : output.out);
    if (const std::string end = earlyEndOf(result, arguments.output); !end.empty())
        output.err << "kshmi: " << end << '\n';
}

int runRecord(const RecordArguments& arguments, const Output& output) {
    if (arguments.isJson && arguments.output == kStandardStream)
        throw Error("--json: the recording goes to standard output; name a file for it with --output");
    RecordOptions options = arguments.options;
    options.target.path = arguments.output;
    for (const std::string& value : arguments.values) options.values.push_back(valueOf(value));
    listen(options, output);
    enterHost(output.err);
    Session session(arguments.file);
    noticeNames(session, output.err);
    const StopRequests requests;
    const RecordResult result = recordModel(session, options);
    tell(arguments, result, session, output);
    return result.end.kind == UnitEndKind::done ? kSuccess : kStoppedEarly;
}

void addRunOptions(CLI::App& command, RecordArguments& arguments) {
    RecordOptions& options = arguments.options;
    command.add_option("--until", options.until, "simulated time at which it ends; the unit's own if left out")
        ->check(anySeconds())
        ->type_name("SECONDS");
    command
        .add_option("--step", options.step,
                    "simulated time from sample to sample; the unit's own, else a 500th of the run, if left out")
        ->check(anySeconds())
        ->type_name("SECONDS");
    command.add_option("--set", arguments.values, "start value of a parameter or input; may be repeated")
        ->type_name("NAME=VALUE")
        ->allow_extra_args(false);
    command.add_option("--inputs", options.inputs, "CSV file of inputs: a column \"time\", and one for each input")
        ->type_name("FILE");
    command.add_option("--fmu", options.unit, "the unit, where it is not where the model was imported from")
        ->type_name("FILE");
    command
        .add_option("--timeout", options.control.timeout,
                    "stop a unit that takes longer than this for one step; no limit if 0 or left out")
        ->check(seconds("give a number of seconds, 0 for no limit", 0.0))
        ->type_name("SECONDS");
}

}  // namespace

void addRecord(CLI::App& app, Run& run) {
    const auto arguments = std::make_shared<RecordArguments>();
    CLI::App* const command =
        app.add_subcommand("record", "Run the unit that a model was imported from, and keep what is observed");
    command->footer(
        "A unit is a program, and this runs it, with all that you may do: run none that you would not start yourself. "
        "It has a process of its own; when it crashes or is stopped, what was recorded until then is kept, and the "
        "command ends with 6.\n"
        "Examples:\n"
        "  kshmi record cruise.json --fmu cruise.fmu --until 10 -o run.csv\n"
        "  kshmi record cruise.json --fmu cruise.fmu --step 0.01 --set target=30 -o runs.db\n"
        "  kshmi record cruise.json --fmu cruise.fmu --inputs target.csv --timeout 30 --log -o run.csv");
    command->add_option("MODEL", arguments->file, "model file")->required();
    addRunOptions(*command, *arguments);
    command
        ->add_option("-o,--output", arguments->output,
                     "file to write: a database for .db, .sqlite and .sqlite3, where each run is added, else CSV; "
                     "standard output if left out")
        ->type_name("FILE");
    command->add_flag("--replace", arguments->options.target.replaces, "replace a CSV file that is there already");
    command->add_flag("--log", arguments->options.control.logs, "print the unit's messages");
    command->add_flag("--json", arguments->isJson, "print JSON");
    command->add_flag("-q,--quiet", arguments->isQuiet, "do not say how it went, unless it ends early");
    runWith(*command, runRecord, arguments, run);
}

}  // namespace kshmi
