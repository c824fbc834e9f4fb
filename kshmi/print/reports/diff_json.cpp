#include <fmt/format.h>

#include "kshmi/print/reports/diff_report.h"
#include "workbench/compare/saved_records.h"
#include "workbench/json/json_object.h"
#include "workbench/text/text.h"

namespace kshmi {

using namespace workbench;

namespace {

void appendValue(std::string& out, const std::string& json) { out += json.empty() ? "null" : json; }

void appendDiffBlock(std::string& out, const ModelFile& file, const kestrel::Block& block) {
    JsonObject object(out);
    object.text("block", file.model.fullPath(block)).number("ports", block.outputs.size()).close();
}

void appendNames(std::string& out, const std::vector<std::u16string>& names) { appendJsonTexts(out, names); }

void appendChange(std::string& out, const ModelFile& before, const ModelFile& after, const BlockChange& change) {
    JsonObject object(out);
    object.text("block", after.model.fullPath(*change.after)).text("from", before.model.fullPath(*change.before));
    object.truth("renamed", change.before->path != change.after->path).name("addedPorts");
    appendNames(out, change.addedPorts);
    object.name("removedPorts");
    appendNames(out, change.removedPorts);
    object.truth("reordered", change.isReordered).truth("chartChanged", change.isChartChanged).close();
}

void appendBlocks(std::string& out, const ModelDiff& diff, const ModelFile& before, const ModelFile& after) {
    JsonObject object(out);
    const auto list = [&](const char* name, auto isIn, auto append) {
        object.name(name);
        JsonArray array(out);
        for (const BlockChange& change : diff.blocks) {
            if (!isIn(change)) continue;
            array.next();
            append(change);
        }
        array.close();
    };
    list(
        "added", [](const auto& one) { return !one.before; },
        [&](const auto& one) { appendDiffBlock(out, after, *one.after); });
    list(
        "changed", [](const auto& one) { return one.before && one.after; },
        [&](const auto& one) { appendChange(out, before, after, one); });
    list(
        "removed", [](const auto& one) { return !one.after; },
        [&](const auto& one) { appendDiffBlock(out, before, *one.before); });
    object.truth("reordered", diff.areBlocksReordered).close();
}

// The records of one kind in both files.
struct Lists {
    const char* what;  // "signal" or "client"
    const hvArray* before;
    const hvArray* after;
    std::u16string modelBefore, modelAfter;

    bool isSignals() const { return what == std::string_view("signal"); }
};

void appendPlace(std::string& out, JsonObject& object, const hvArray* signals, std::size_t position,
                 const std::u16string& model) {
    object.text("block", model + u"/" + recordText(signals, position, "BlockPath_"));
    const std::u16string domain = recordText(signals, position, "DomainType_");
    if (domain.empty()) {
        object.name("port");
        out += canonicalField(signals, position, "OutputPortIndex_");
        return;
    }
    object.text("item", recordText(signals, position, "SubPath_")).text("domain", domain);
}

void appendRecord(std::string& out, const RecordChange& change, const Lists& lists) {
    const std::size_t position = change.after ? *change.after : *change.before;
    JsonObject object(out);
    object.name(lists.what);
    JsonObject(out).text("uuid", change.uuid).number("position", position + 1).close();
    if (lists.isSignals())
        appendPlace(out, object, change.after ? lists.after : lists.before, position,
                    change.after ? lists.modelAfter : lists.modelBefore);
    else
        object.text("type", change.what);
    if (change.before && change.after) object.number("fromPosition", *change.before + 1).truth("moved", change.isMoved);
    if (!change.fields.empty()) {
        object.name("fields");
        appendJsonArray(out, change.fields, [&](const FieldChange& field) {
            JsonObject one(out);
            one.text("field", field.field).name("before");
            appendValue(out, field.before);
            one.name("after");
            appendValue(out, field.after);
            one.close();
        });
    }
    object.close();
}

void appendRecords(std::string& out, const RecordsDiff& diff, const Lists& lists) {
    JsonObject object(out);
    const auto list = [&](const char* name, const std::vector<RecordChange>& changes) {
        object.name(name);
        appendJsonArray(out, changes, [&](const RecordChange& change) { appendRecord(out, change, lists); });
    };
    list("added", diff.added);
    list("changed", diff.changed);
    list("removed", diff.removed);
    list("reordered", diff.reordered);
    object.number("unchangedCount", diff.unchanged).close();
}

}  // namespace

void printDiffJson(const ModelDiff& diff, const ComparedFiles& files, const ModelFile& before, const ModelFile& after,
                   const Output& output) {
    std::string out;
    JsonObject object(out);
    object.number("kshmi", 1).text("command", std::string_view("diff")).text("before", files.before);
    object.text("after", files.after).truth("same", diff.isSame()).name("model");
    JsonObject(out).text("before", before.model.name()).text("after", after.model.name()).close();
    object.name("blocks");
    appendBlocks(out, diff, before, after);
    const std::u16string& oldName = before.model.name();
    const std::u16string& newName = after.model.name();
    object.name("signals");
    appendRecords(out, diff.signals, {"signal", before.signals.get(), after.signals.get(), oldName, newName});
    object.name("clients");
    appendRecords(out, diff.clients, {"client", before.clients.get(), after.clients.get(), oldName, newName});
    object.name("parked");
    JsonObject parked(out);
    parked.number("before", diff.parkedBefore).number("after", diff.parkedAfter).truth("same", diff.isParkedSame);
    parked.close();
    object.close();
    output.out << printableJson(out) << '\n';
}

void printMergeJson(const MergedModel& merged, const std::string& file, bool isDryRun, const Output& output) {
    std::string out;
    JsonObject object(out);
    object.number("kshmi", 1).text("command", std::string_view("merge")).text("file", file).truth("dryRun", isDryRun);
    object.truth("saved", !isDryRun).number("signals", hvGetNumberOfElements(merged.file.signals.get()));
    object.number("clients", hvGetNumberOfElements(merged.file.clients.get())).name("conflicts");
    appendJsonArray(out, merged.conflicts, [&](const MergeConflict& conflict) {
        JsonObject one(out);
        one.text("list", conflict.list).text("id", conflict.id).text("field", conflict.field);
        one.text("base", conflict.base).text("ours", conflict.ours).text("theirs", conflict.theirs);
        one.text("text", conflict.text).close();
    });
    object.close();
    output.out << printableJson(out) << '\n';
}

}  // namespace kshmi
