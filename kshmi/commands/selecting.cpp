#include "kshmi/commands/selecting.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <istream>
#include <sstream>

#include "kshmi/commands/command_options.h"
#include "workbench/files/standard_stream.h"
#include "workbench/text/text.h"

namespace kshmi {

using namespace workbench;

namespace {

constexpr const char* kReferenceHelp =
    "block/path:port (number or name), chart/State, chart/datum, or a chart with --activity or --ssid; a block alone "
    "is "
    "all its output ports and, for a chart, the chart itself. The model's name may stand in front; \"/\" in front says "
    "that it does not. Beside a block named \"a:1\", \"a:1\" is that block: call port 1 of \"a\" by its name";
constexpr const char* kPatternHelp =
    "everything whose whole path matches, with or without the model's name in front; may be repeated. \"*\" is any "
    "text, \"/\" included, \"?\" one character, \"[a-z]\" one of a set, \"[!a-z]\" one outside it; \"\\\" takes the "
    "meaning from the next: \"\\[1]\"";

std::vector<SourceKind> kindsOf(const std::vector<std::string>& words) {
    std::vector<SourceKind> kinds;
    kinds.reserve(words.size());
    for (const std::string& word : words) kinds.push_back(sourceKindOf(word).value());
    return kinds;
}

void requireUtf8(const std::string& line, const ErrorPlace& place) {
    if (toUtf8(toUtf16(line)) != line)
        throw Error(place, inQuotes(line) + ": contains bytes that are not UTF-8; convert the list",
                    ErrorCode::request);
}

void readList(std::istream& in, const std::string& name, std::vector<ListedReference>& listed) {
    std::size_t number = 0;
    for (std::string line; std::getline(in, line);) {
        ++number;
        if (number == 1 && line.starts_with("\xEF\xBB\xBF")) line.erase(0, 3);
        if (line.ends_with('\r')) line.pop_back();
        if (line.empty()) continue;
        requireUtf8(line, {name, number});
        listed.push_back({line, {name, number}});
    }
    if (in.bad()) throw Error({name}, "the list cannot be read to its end", ErrorCode::file);
}

std::vector<ListedReference> readLists(const std::vector<std::string>& files) {
    std::vector<ListedReference> listed;
    for (const std::string& file : files) {
        if (file == kStandardStream) {
            std::istringstream in(readStandardInput());
            readList(in, calledInMessages(file), listed);
            continue;
        }
        std::ifstream in(file, std::ios::binary);
        if (!in)
            throw Error({file}, fmt::format("the list cannot be opened: {}", std::strerror(errno)), ErrorCode::file);
        readList(in, file, listed);
    }
    return listed;
}

}  // namespace

void addSelection(CLI::App& command, SelectionArguments& arguments) {
    Selection& selection = arguments.selection;
    const auto list = [&](const char* name, std::vector<std::string>& values, const char* help, const char* type) {
        return command.add_option(name, values, help)->type_name(type)->allow_extra_args(false);
    };
    command.add_option("REF", selection.references, kReferenceHelp);
    list("--from", arguments.from, "what this file names, one REF per line; - is standard input", "FILE");
    list("--all", selection.all, kPatternHelp, "GLOB");
    list("--except", selection.except, "but not what matches this one; may be repeated", "GLOB");
    list("--kind", arguments.kinds, "only what is of this kind; may be repeated", "KIND")
        ->check(oneOf({kSourceKinds.begin(), kSourceKinds.end()}));
    command
        .add_option("--activity", selection.options.activity,
                    "activity of a chart item: Self, Child or Leaf; Data of a datum")
        ->check(oneOf({"Self", "Child", "Leaf", "Data"}));
    command
        .add_option("--ssid", selection.options.ssid,
                    "the chart item's identifier within its chart; 0 is the chart itself")
        ->transform(wholeNumber());
}

void addClientSelection(CLI::App& command, ClientSelection& selection) {
    command.add_option("--client,--uuid", selection.calls, "the client with this UUID or position; may be repeated")
        ->allow_extra_args(false);
    command.add_option("--type", selection.types, "clients of this kind; may be repeated")->allow_extra_args(false);
    command
        .add_option_function<std::vector<std::string>>(
            "--state",
            [&selection](const std::vector<std::string>& words) {
                for (const std::string& word : words) selection.addState(word);
            },
            "clients in this state: watching; dangling, the signal is gone; elsewhere, the signal may be in a model "
            "that is not open; foreign, of another model; deprecated, of a kind that is no longer supported")
        ->type_name("STATE")
        ->allow_extra_args(false)
        ->check(oneOf({kClientStates.begin(), kClientStates.end()}));
    const auto add = [&](const char* name, const char* state, const char* help) {
        command.add_flag_callback(
            name, [&selection, state] { selection.addState(state); }, help);
    };
    add("--dangling", "dangling", "the same as --state dangling");
    add("--foreign", "foreign", "the same as --state foreign");
}

bool isAnythingSelected(const SelectionArguments& arguments) {
    return arguments.selection.isAnything() || !arguments.from.empty();
}

bool isNarrowed(const SelectionArguments& arguments) {
    return isAnythingSelected(arguments) || !arguments.selection.except.empty() || !arguments.kinds.empty();
}

void requireApplicable(const SelectionArguments& arguments, bool isGiven) {
    const Selection& selection = arguments.selection;
    const bool isNarrowed = !selection.options.activity.empty() || selection.options.ssid;
    if (isNarrowed && !isAnythingSelected(arguments))
        throw Error("--activity and --ssid refine a reference to a chart; name the chart as REF");
    if (selection.options.ssid && !selection.all.empty())
        throw Error("--ssid is for one chart and --all for many blocks; name the chart as REF");
    const bool isLimited = !selection.except.empty() || !arguments.kinds.empty();
    if (isLimited && isGiven && !isAnythingSelected(arguments))
        throw Error("--except and --kind narrow what REF, --from and --all select; give one of these");
}

void requireSelection(const SelectionArguments& arguments, bool isGiven, const std::string& others) {
    if (!isAnythingSelected(arguments) && !isGiven)
        throw Error(fmt::format("nothing to work on; name a REF, or give --all 'GLOB'{} --from FILE",
                                others.empty() ? " or" : fmt::format(", {} or", others)));
    requireApplicable(arguments, isGiven);
}

void readLists(SelectionArguments& arguments) { arguments.listed = readLists(arguments.from); }

Selected select(const kestrel::Model& model, const SelectionArguments& arguments, const Output& output) {
    Selection selection = arguments.selection;
    selection.listed = arguments.listed ? *arguments.listed : readLists(arguments.from);
    selection.kinds = kindsOf(arguments.kinds);
    Selected selected = workbench::select(model, selection);
    for (const std::string& pattern : selected.idle)
        output.err << "kshmi: warning: --except " << inQuotes(pattern) << " leaves nothing out\n";
    if (selected.sources().empty() && isNarrowed(arguments))
        output.err << "kshmi: warning: nothing is selected: --except and --kind leave nothing of it\n";
    return selected;
}

Selected selectOrAll(const kestrel::Model& model, const SelectionArguments& arguments, const Output& output) {
    if (isAnythingSelected(arguments) || model.blocks().empty()) return select(model, arguments, output);
    SelectionArguments all = arguments;
    all.selection.all = {"*"};
    return select(model, all, output);
}

Positions selectedClients(const Session& session, const SelectionArguments& arguments, const ClientSelection& clients,
                          const Output& output) {
    const Selected selected = select(session.model(), arguments, output);
    return selectClients(session, isAnythingSelected(arguments) ? &selected : nullptr, arguments.selection.options,
                         clients);
}

}  // namespace kshmi
