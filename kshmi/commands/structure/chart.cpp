#include <fmt/format.h>

#include "kshmi/commands/commands.h"
#include "kshmi/commands/structure/structure_change.h"
#include "kshmi/print/json/structure_records.h"
#include "workbench/find/reference.h"
#include "workbench/structure/chart_items.h"
#include "workbench/text/text.h"

namespace kshmi {

namespace {

using namespace workbench;

struct ChartArguments {
    std::string file;
    std::string item;  // of an addition: the chart
    std::string name;
    ReferenceOptions reference;  // only an SSID
    bool isRecursive = false;
    bool isUnmarking = false;
    ChangeOptions options;
};

ChangeReport::Members membersOf(const Session& session, const kestrel::Block& block, const std::u16string& item,
                                const std::u16string& from = {}) {
    return [=, full = session.model().fullPath(block)](JsonObject& object) { appendItem(object, full, item, from); };
}

template <ItemKind kind>
void add(Session& session, ChangeReport& report, const ChartArguments& arguments) {
    const kestrel::Block& block = resolveBlock(session.model(), arguments.item);
    const std::uint32_t ssid = addItem(session, block, kind, toUtf16(arguments.name), arguments.reference.ssid);
    report.change(Fate::added, "add", "added",
                  fmt::format("{} {} (SSID {}) to {}", kind == ItemKind::state ? "state" : "datum",
                              printable(std::string_view(arguments.name)), ssid, printable(block.path)),
                  membersOf(session, block, toUtf16(arguments.name)));
}

void remove(Session& session, ChangeReport& report, const ChartArguments& arguments) {
    const SignalSource source = itemCalled(session.model(), arguments.item, arguments.reference);
    const RemovedItems removed =
        removeItem(session, *source.block, *source.item, arguments.isRecursive ? Below::remove : Below::refuse,
                   arguments.isUnmarking ? Marks::remove : Marks::keep);
    for (const std::u16string& item : removed.items)
        report.change(Fate::removed, "remove", "removed",
                      fmt::format("{} of {}", printable(item), printable(source.block->path)),
                      membersOf(session, *source.block, item));
    tellRemoved(removed.signals, report);
}

void rename(Session& session, ChangeReport& report, const ChartArguments& arguments) {
    const SignalSource source = itemCalled(session.model(), arguments.item, arguments.reference);
    const RenamedItems renamed = renameItem(session, *source.block, *source.item, toUtf16(arguments.name));
    for (const auto& [before, after] : renamed.items)
        report.change(Fate::changed, "rename", "renamed", fmt::format("{} to {}", printable(before), printable(after)),
                      membersOf(session, *source.block, after, before));
    const std::string signals = counted(renamed.signals, "signal");
    if (renamed.signals > 0) report.note("would follow: " + signals, "following: " + signals);
}

CLI::App* describe(CLI::App& app, const char* name, const char* help, const char* examples, const char* item,
                   ChartArguments& arguments) {
    CLI::App* const command = addCommand(app, name, help, examples, arguments.file);
    const bool isChart = std::string_view(item) == "CHART";
    command->add_option(item, arguments.item, isChart ? "path of the block" : "path of the state or datum")->required();
    command->add_option("--ssid", arguments.reference.ssid, "its identifier within the chart")
        ->transform(wholeNumber());
    addChangeOptions(*command, arguments.options);
    return command;
}

void describeAdditions(CLI::App& app, Run& run) {
    const auto state = std::make_shared<ChartArguments>();
    CLI::App* command =
        describe(app, "add-state", "Add a state; the block becomes a chart if it is not one",
                 "  kshmi chart add-state cruise.json Control/Mode Engaged/Coasting --ssid 5", "CHART", *state);
    command->add_option("STATE", state->name, "path of the state below the chart")->required();
    runWith(*command, changing<ChartArguments>("chart add-state", add<ItemKind::state>), state, run);
    const auto datum = std::make_shared<ChartArguments>();
    command = describe(app, "add-datum", "Add a datum; the block becomes a chart if it is not one",
                       "  kshmi chart add-datum cruise.json Control/Mode setSpeed", "CHART", *datum);
    command->add_option("NAME", datum->name, "name of the datum")->required();
    runWith(*command, changing<ChartArguments>("chart add-datum", add<ItemKind::datum>), datum, run);
}

void describeOthers(CLI::App& app, Run& run) {
    const auto removed = std::make_shared<ChartArguments>();
    CLI::App* command =
        describe(app, "remove", "Remove a state or datum",
                 "  kshmi chart remove cruise.json Control/Mode/Engaged --recursive --unmark", "ITEM", *removed);
    command->add_flag("--recursive", removed->isRecursive, "remove the states below it, too");
    command->add_flag("--unmark", removed->isUnmarking, "remove the signals on it, too");
    runWith(*command, changing<ChartArguments>("chart remove", remove), removed, run);
    const auto renamed = std::make_shared<ChartArguments>();
    command = describe(app, "rename", "Give a state or datum another name; signals follow",
                       "  kshmi chart rename cruise.json Control/Mode/Engaged/Holding Held", "ITEM", *renamed);
    command->add_option("NAME", renamed->name, "its new name, without the states above it")->required();
    runWith(*command, changing<ChartArguments>("chart rename", rename), renamed, run);
}

}  // namespace

void addChart(CLI::App& app, Run& run) {
    CLI::App* const command = app.add_subcommand("chart", "Add, remove and rename the states and data of a chart");
    command->require_subcommand(1);
    describeAdditions(*command, run);
    describeOthers(*command, run);
}

}  // namespace kshmi
