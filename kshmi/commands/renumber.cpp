#include <fmt/format.h>

#include <charconv>

#include "kshmi/commands/command_options.h"
#include "kshmi/commands/commands.h"
#include "kshmi/print/json/structure_records.h"
#include "kshmi/print/reports/change_report.h"
#include "kshmi/print/reports/lost_clients.h"
#include "workbench/change/renumbering.h"
#include "workbench/find/reference.h"
#include "workbench/find/watching.h"
#include "workbench/text/error.h"
#include "workbench/text/text.h"

namespace kshmi {

namespace {

using namespace workbench;

struct RenumberArguments {
    std::string file;
    std::string block;
    std::string numbers;  // with commas between; entry k is the new number of port k, 0 for a deleted one
    ChangeOptions options;
};

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

ChangeReport::Members membersOf(const std::u16string& block, const PortChange& one) {
    return [=](JsonObject& object) { appendPort(object, block, one); };
}

void tell(const std::u16string& block, const Renumbering& changes, ChangeReport& report) {
    for (const PortChange& one : changes.ports) {
        const std::string port = fmt::format("port {} ({})", one.from, printable(one.name));
        if (one.to == 0)
            report.change(Fate::removed, "delete", "deleted", port, membersOf(block, one));
        else
            report.change(Fate::changed, "renumber", "renumbered", fmt::format("{} to {}", port, one.to),
                          membersOf(block, one));
    }
    for (const PortChange& one : changes.signals) {
        const std::string name = fmt::format("  signal {} on port {}", inQuotes(one.name), one.from);
        if (one.to == 0)
            report.note(name + " would be lost", name + " is lost");
        else
            report.note(fmt::format("{} would follow to port {}", name, one.to),
                        fmt::format("{} follows to port {}", name, one.to));
    }
}

int runRenumber(const RenumberArguments& arguments, const Output& output) {
    kshmi::enterHost(output.err);
    const std::vector<int> numbers = numbersOf(arguments.numbers);
    Session session(arguments.file);
    const kestrel::Block& block = resolveBlock(session.model(), arguments.block);
    ChangeReport report(output, "renumber", arguments.options, session);
    const DanglingWatch watch(session);
    tell(session.model().fullPath(block), renumberPorts(session, block, numbers), report);
    const ExitCode code = report.finish();
    warnOfLost(session, watch, arguments.options.isDryRun, output.err);
    return code;
}

}  // namespace

void addRenumber(CLI::App& app, Run& run) {
    const auto arguments = std::make_shared<RenumberArguments>();
    CLI::App* const command =
        addCommand(app, "renumber", "Renumber or delete a block's output ports; signals follow, the model is saved",
                   "  kshmi renumber cruise.json Sensors 2,1,3  # ports 1 and 2 change places\n"
                   "  kshmi renumber cruise.json Sensors 1,0,2  # of three: port 2 is deleted, 3 becomes 2\n"
                   "  kshmi renumber cruise.json Sensors ''     # nothing changes",
                   arguments->file);
    command->add_option("BLOCK", arguments->block, "path of the block")->required();
    command
        ->add_option("NUMBERS", arguments->numbers,
                     "new numbers of ports 1, 2, ... with commas between, 0 for a deleted one; further ports keep "
                     "theirs; with a 0, give numbers for all ports")
        ->required();
    addChangeOptions(*command, arguments->options);
    runWith(*command, runRenumber, arguments, run);
}

}  // namespace kshmi
