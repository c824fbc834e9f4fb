#include "kshmi/print/reports/diff_report.h"

#include <fmt/format.h>

#include <array>

#include "kshmi/print/line_list.h"
#include "workbench/text/text.h"

namespace kshmi {

using namespace workbench;

namespace {

std::string listOf(const std::vector<std::u16string>& names) {
    constexpr std::size_t kMost = 5;
    return listed(names, kMost, [](const std::u16string& name) { return printable(name); });
}

std::string numbers(std::size_t added, std::size_t removed, std::size_t changed) {
    return fmt::format("{} added, {} removed, {} changed", added, removed, changed);
}

std::string describe(const BlockChange& change) {
    if (!change.before || !change.after) {
        const kestrel::Block& block = change.after ? *change.after : *change.before;
        return fmt::format("  {} {}, {}", change.after ? '+' : '-', printable(block.path),
                           counted(block.outputs.size(), "port"));
    }
    std::string line = fmt::format("  ~ {}", printable(change.after->path));
    auto say = [&, separator = ": "](const std::string& what) mutable {
        line += separator + what;
        separator = "; ";
    };
    if (change.before->path != change.after->path) say("was " + printable(change.before->path));
    if (change.before->eid != change.after->eid)
        say(fmt::format("identifier {} is now {}", inQuotes(change.before->eid), inQuotes(change.after->eid)));
    if (!change.addedPorts.empty()) say("ports added: " + listOf(change.addedPorts));
    if (!change.removedPorts.empty()) say("ports removed: " + listOf(change.removedPorts));
    if (change.isReordered) say("its ports are in another order");
    if (change.isChartChanged) say("its chart has changed");
    return line;
}

void printBlocks(const ModelDiff& diff, LineList& lines) {
    std::array<std::size_t, 3> counts{};
    for (const BlockChange& change : diff.blocks) ++counts[!change.before ? 0 : !change.after ? 1 : 2];
    if (!diff.blocks.empty()) lines.add("blocks: " + numbers(counts[0], counts[1], counts[2]));
    for (const BlockChange& change : diff.blocks) lines.addMade([&] { return describe(change); });
    if (diff.areBlocksReordered) lines.add("blocks: in another order");
}

std::string nameOf(const RecordChange& change) {
    const std::size_t position = change.after ? *change.after : *change.before;
    return fmt::format("{} {} ({})", position + 1, printable(std::string_view(change.what)), printable(change.uuid));
}

std::string describe(const FieldChange& change) {
    return fmt::format("      {}: {} -> {}", change.field, change.before.empty() ? "nothing" : change.before,
                       change.after.empty() ? "nothing" : change.after);
}

void printRecords(const RecordsDiff& diff, const char* title, LineList& lines) {
    if (diff.isSame()) return;
    const std::string order =
        diff.reordered.empty() ? "" : fmt::format(", {} elsewhere in the order", diff.reordered.size());
    lines.add(fmt::format("{}: {}{}, {} unchanged", title,
                          numbers(diff.added.size(), diff.removed.size(), diff.changed.size()), order, diff.unchanged));
    for (const RecordChange& change : diff.added) lines.addMade([&] { return "  + " + nameOf(change); });
    for (const RecordChange& change : diff.removed) lines.addMade([&] { return "  - " + nameOf(change); });
    for (const RecordChange& change : diff.changed) {
        lines.addMade([&] { return fmt::format("  ~ {}{}", nameOf(change), change.isMoved ? ", moved" : ""); });
        for (const FieldChange& field : change.fields) lines.addMade([&] { return describe(field); });
    }
    for (const RecordChange& change : diff.reordered)
        lines.addMade([&] { return fmt::format("  > {}, was at {}", nameOf(change), *change.before + 1); });
}

}  // namespace

void printDiff(const ModelDiff& diff, const ComparedFiles& files, bool showsAll, const Output& output) {
    if (diff.isSame()) return;
    output.out << fmt::format("{} -> {}\n", printable(std::string_view(files.before)),
                              printable(std::string_view(files.after)));
    LineList lines(showsAll);
    if (diff.name) lines.add(fmt::format("model: renamed from {} to {}", diff.name->before, diff.name->after));
    printBlocks(diff, lines);
    printRecords(diff.signals, "signals", lines);
    printRecords(diff.clients, "clients", lines);
    if (!diff.isParkedSame)
        lines.add(fmt::format("parked marks: {} before, {} after", diff.parkedBefore, diff.parkedAfter));
    lines.print(output);
}

void printConflicts(const MergedModel& merged, const std::string& file, bool showsAll, const Output& output) {
    LineList lines(showsAll);
    for (const MergeConflict& conflict : merged.conflicts) {
        const std::string id = conflict.id.empty() ? "" : " " + printable(std::string_view(conflict.id));
        const std::string field = conflict.field.empty() ? "" : ", " + conflict.field;
        lines.add(fmt::format("  {}{}{}: {}", conflict.list, id, field, printable(std::string_view(conflict.text))));
        const auto value = [&](const char* side, const std::string& json) {
            lines.add(fmt::format("      {}: {}", side, json.empty() ? "nothing" : printable(std::string_view(json))));
        };
        value("base  ", conflict.base);
        value("ours  ", conflict.ours);
        value("theirs", conflict.theirs);
    }
    if (lines.isEmpty()) return;
    output.err << fmt::format("kshmi: {}: {}; ours is in place\n", printable(std::string_view(file)),
                              counted(merged.conflicts.size(), "conflict"));
    lines.print({output.err, output.err});
}

}  // namespace kshmi
