#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <charconv>

#include "foundation/model_path.h"
#include "kshmi/commands/command_options.h"
#include "kshmi/commands/commands.h"
#include "kshmi/print/change_report.h"
#include "kshmi/print/lost_clients.h"
#include "signals/signal_specification.h"
#include "workbench/find/watching.h"
#include "workbench/session/host_process.h"
#include "workbench/text/error.h"
#include "workbench/text/text.h"

namespace kshmi {

namespace {

using namespace workbench;

struct RenumberArguments {
    std::string file;
    std::string block;
    std::string numbers;  ///< with commas between; entry k is the new number of port k, 0 for a deleted one
    bool isDryRun = false;
};

using kestrel::Block;

std::vector<int> numbersOf(const std::string& text) {
    std::vector<int> numbers;
    const char* at = text.data();
    const char* const end = at + text.size();
    while (at != end) {
        int number = 0;
        const auto [stop, code] = std::from_chars(at, end, number);
        const bool isListed = stop == end || (*stop == ',' && stop + 1 != end);
        if (code != std::errc() || number < 0 || !isListed)
            throw Error(inQuotes(text) +
                        ": give the ports' new numbers with commas between, 0 for a deleted one: 2,1,0");
        numbers.push_back(number);
        at = stop == end ? end : stop + 1;
    }
    return numbers;
}

/// The numbers, and for the ports beyond them those that are left, in order.
std::string completed(std::vector<int> numbers, std::size_t count) {
    for (int number = 1; numbers.size() < count; ++number)
        if (std::find(numbers.begin(), numbers.end(), number) == numbers.end()) numbers.push_back(number);
    return fmt::format("{}", fmt::join(numbers, ","));
}

/// The names of the outputs in their new order. What remains must be numbered 1, 2, ... without gaps.
std::vector<std::u16string> renumbered(const Block& block, const std::vector<int>& numbers) {
    const std::size_t count = block.outputs.size();
    if (numbers.size() > count)
        throw Error(fmt::format("{}: {} given, and the block has {}", inQuotes(block.path),
                                counted(numbers.size(), "number"), counted(count, "output port")));
    const auto deleted = static_cast<std::size_t>(std::count(numbers.begin(), numbers.end(), 0));
    std::vector<const std::u16string*> names(count - deleted);
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t number = i < numbers.size() ? static_cast<std::size_t>(numbers[i]) : i + 1;
        if (number == 0) continue;
        const bool isTaken = number > names.size() || names[number - 1];
        if (isTaken && i >= numbers.size())
            throw Error(fmt::format("{}: port {} cannot keep its number; give numbers for all {}, e.g. {}",
                                    inQuotes(block.path), number, counted(count, "port"), completed(numbers, count)));
        if (isTaken)
            throw Error(
                fmt::format("{}: port {} would have the number {}{}; the {} that remain need the numbers from 1 "
                            "to {}, each once",
                            inQuotes(block.path), i + 1, number, number > names.size() ? "" : " like another one",
                            counted(names.size(), "port"), names.size()));
        names[number - 1] = &block.outputs[i];
    }
    std::vector<std::u16string> outputs;
    outputs.reserve(names.size());
    for (const std::u16string* const name : names) outputs.push_back(*name);
    return outputs;
}

void tellPorts(const Block& block, const std::vector<int>& numbers, ChangeReport& report) {
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        const std::string port = fmt::format("port {} ({})", i + 1, printable(block.outputs[i]));
        if (numbers[i] == 0)
            report.change("delete", "deleted", port);
        else if (static_cast<std::size_t>(numbers[i]) != i + 1)
            report.change("renumber", "renumbered", fmt::format("{} to {}", port, numbers[i]));
    }
}

using Signals = std::vector<ks_hmi::InstrumentedSignals::SignalPtr>;

/// The signals on the block's ports that do not stay as they are.
Signals affected(const Session& session, const Block& block, const std::vector<int>& numbers) {
    Signals signals;
    for (std::size_t i = 0; i < session.signals().getCount(); ++i) {
        auto signal = session.signals().share(i);
        const auto port = static_cast<std::size_t>(signal->m_outputPortIndex);
        if (isChartSignal(*signal) || blockOf(session.model(), *signal) != &block || port > numbers.size()) continue;
        if (numbers[port - 1] != signal->m_outputPortIndex) signals.push_back(std::move(signal));
    }
    return signals;
}

/// Here a port's logical number is its number, so the two stay together.
void followLogically(const Signals& signals, const std::vector<int>& numbers) {
    for (const auto& signal : signals) {
        const int number = numbers[static_cast<std::size_t>(signal->m_outputPortIndex) - 1];
        if (number > 0 && signal->m_logicalPortIndex == signal->m_outputPortIndex) signal->m_logicalPortIndex = number;
    }
}

void tellSignals(const Signals& signals, const std::vector<int>& numbers, ChangeReport& report) {
    for (const auto& signal : signals) {
        const int number = numbers[static_cast<std::size_t>(signal->m_outputPortIndex) - 1];
        const std::string name =
            fmt::format("  signal {} on port {}", inQuotes(signal->m_signalName), signal->m_outputPortIndex);
        if (number == 0)
            report.note(name + " would be lost", name + " is lost");
        else
            report.note(fmt::format("{} would follow to port {}", name, number),
                        fmt::format("{} follows to port {}", name, number));
    }
}

int runRenumber(const RenumberArguments& arguments, const Output& output) {
    enterHost(output.err);
    const std::vector<int> numbers = numbersOf(arguments.numbers);
    Session session(arguments.file);
    const kestrel::Model& model = session.model();
    const Block& block = resolveBlock(model, arguments.block);
    std::vector<std::u16string> outputs = renumbered(block, numbers);
    // What is bound answers by handle under its new number, whatever its logical number is.
    session.signals().applyRebindingRules(session.set(), true);

    ChangeReport report(output, arguments.isDryRun);
    const DanglingWatch watch(session);
    const Signals signals = affected(session, block, numbers);
    tellPorts(block, numbers, report);
    tellSignals(signals, numbers, report);
    followLogically(signals, numbers);
    session.signals().renumberPorts(block.handle, model.fullPath(block),
                                    ks_hmi_foundation::AddModelToEID(block.eid, model.name()), numbers);
    session.model().setOutputs(std::u16string(block.path), std::move(outputs));
    report.finish(session);
    warnOfLost(session, watch, arguments.isDryRun, output.err);
    return kSuccess;
}

}  // namespace

void addRenumber(CLI::App& app, Run& run) {
    const auto arguments = std::make_shared<RenumberArguments>();
    CLI::App* const command =
        addCommand(app, "renumber", "Renumber or delete a block's output ports; signals follow, the model is saved",
                   "  kshmi renumber cruise.json Sensors 2,1     (ports 1 and 2 change places)\n"
                   "  kshmi renumber cruise.json Sensors 1,0,2   (of three: port 2 is deleted, 3 becomes 2)\n"
                   "  kshmi renumber cruise.json Sensors ''      (nothing changes)",
                   arguments->file);
    command->add_option("BLOCK", arguments->block, "path of the block")->required();
    command
        ->add_option("NUMBERS", arguments->numbers,
                     "new numbers of ports 1, 2, ... with commas between, 0 for a deleted one; further ports keep "
                     "theirs; with a 0, give numbers for all ports")
        ->required();
    addDryRun(*command, arguments->isDryRun);
    runWith(*command, runRenumber, arguments, run);
}

}  // namespace kshmi
