#include "workbench/compare/diff.h"

#include <fmt/format.h>

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

#include "host/values.h"
#include "workbench/compare/saved_records.h"
#include "workbench/json/json_text.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

std::string jsonIfThere(const std::u16string* text) {
    std::string out;
    if (text) appendJsonText(out, std::u16string_view(*text));
    return out;
}

bool isPlaceField(std::string_view field) {
    return field == "BlockPath_" || field == "EID_" || field == "SubPath_" || field == "OutputPortIndex_";
}

// The records of one kind in both files.
class RecordsComparison {
public:
    RecordsComparison(RecordKind kind, const ModelFile& before, const ModelFile& after)
        : m_kind(kind),
          m_before(before),
          m_after(after),
          m_old(recordsOf(before)),
          m_new(recordsOf(after)),
          m_pairs(pairRecords(m_old, m_new)) {}

    RecordsDiff run() {
        for (std::size_t i = 0; i < m_pairs.ofFirst.size(); ++i)
            if (!m_pairs.ofFirst[i]) m_diff.removed.push_back(change(i, std::nullopt));
        for (std::size_t i = 0; i < m_pairs.ofSecond.size(); ++i) look(i);
        findReordered();
        return std::move(m_diff);
    }

private:
    const hvArray* recordsOf(const ModelFile& file) const {
        return m_kind == RecordKind::signal ? file.signals.get() : file.clients.get();
    }
    RecordChange change(std::optional<std::size_t> before, std::optional<std::size_t> after) const {
        const hvArray* const records = after ? m_new : m_old;
        const std::size_t position = after ? *after : *before;
        const bool isSignal = m_kind == RecordKind::signal;
        return {recordText(records, position, "UUID"),
                isSignal ? describeSignal(records, position) : toUtf8(recordText(records, position, "ObserverType_")),
                before, after};
    }
    void look(std::size_t after) {
        const std::optional<std::size_t> before = m_pairs.ofSecond[after];
        if (!before) return m_diff.added.push_back(change(std::nullopt, after));
        if (isSameName(*before, after) && isSameRecord(m_kind, {m_old, *before}, {m_new, after})) {
            ++m_diff.unchanged;
            return;
        }
        std::vector<FieldChange> fields = fieldChanges(*before, after);
        RecordChange found = change(before, after);
        found.isMoved = m_kind == RecordKind::signal && isMoved(*before, after, fields);
        found.fields = std::move(fields);
        m_diff.changed.push_back(std::move(found));
    }
    std::vector<FieldChange> fieldChanges(std::size_t before, std::size_t after) const {
        std::vector<FieldChange> fields;
        for (const char* const field : fieldsOf(m_kind))
            if (!isSameField(m_old, before, m_new, after, field))
                fields.push_back({field, canonicalField(m_old, before, field), canonicalField(m_new, after, field)});
        if (!isSameName(before, after))
            fields.push_back({std::string(kMarkedName), jsonIfThere(m_before.extras.markedName(before)),
                              jsonIfThere(m_after.extras.markedName(after))});
        return fields;
    }
    // What a signal was called; clients have no such name.
    bool isSameName(std::size_t before, std::size_t after) const {
        if (m_kind == RecordKind::client) return true;
        const std::u16string* const oldName = m_before.extras.markedName(before);
        const std::u16string* const newName = m_after.extras.markedName(after);
        return (oldName == nullptr) == (newName == nullptr) && (!oldName || *oldName == *newName);
    }
    bool isMoved(std::size_t before, std::size_t after, const std::vector<FieldChange>& fields) const {
        return std::any_of(fields.begin(), fields.end(), [](const auto& one) { return isPlaceField(one.field); }) ||
               domainParameter(m_old, before, "SSID") != domainParameter(m_new, after, "SSID");
    }
    void findReordered() {
        std::vector<std::size_t> oldPositions;
        std::vector<std::size_t> newPositions;
        for (std::size_t i = 0; i < m_pairs.ofSecond.size(); ++i) {
            if (!m_pairs.ofSecond[i]) continue;
            oldPositions.push_back(*m_pairs.ofSecond[i]);
            newPositions.push_back(i);
        }
        for (const std::size_t i : outOfOrder(oldPositions))
            m_diff.reordered.push_back(change(oldPositions[i], newPositions[i]));
    }

    RecordKind m_kind;
    const ModelFile& m_before;
    const ModelFile& m_after;
    const hvArray* m_old;
    const hvArray* m_new;
    RecordPairs m_pairs;
    RecordsDiff m_diff;
};

using Names = std::vector<std::u16string>;

// Those of `names` that `others` does not have as often.
Names missing(const Names& names, const Names& others) {
    std::unordered_map<std::u16string_view, std::size_t> counts;
    for (const std::u16string& name : others) ++counts[name];
    Names result;
    for (const std::u16string& name : names) {
        std::size_t& count = counts[name];
        count > 0 ? static_cast<void>(--count) : result.push_back(name);
    }
    return result;
}

// Those that `others` has, or, with `has` false, does not have.
Names sifted(const Names& names, const Names& others, bool has) {
    const std::unordered_set<std::u16string_view> known(others.begin(), others.end());
    Names result;
    for (const std::u16string& name : names)
        if (known.contains(name) == has) result.push_back(name);
    return result;
}

bool isWithin(const Names& few, const Names& many) {
    auto next = few.begin();
    for (const std::u16string& name : many)
        if (next != few.end() && *next == name) ++next;
    return next == few.end();
}

// Of ports with the same name, any may be the one that was added or removed.
bool isReordered(const BlockChange& change) {
    const Names& before = change.before->outputs;
    const Names& after = change.after->outputs;
    const Names old = sifted(before, after, true);
    const Names now = sifted(after, before, true);
    const bool hasMore = !sifted(change.addedPorts, before, true).empty();
    const bool hasFewer = !sifted(change.removedPorts, after, true).empty();
    if (!hasMore || !hasFewer) return hasMore ? !isWithin(old, now) : !isWithin(now, old);
    const auto sure = [&](const Names& names) {
        return sifted(sifted(names, change.addedPorts, false), change.removedPorts, false);
    };
    return sure(old) != sure(now);
}

bool isSameChart(const kestrel::Block& one, const kestrel::Block& other) {
    if (one.chart.has_value() != other.chart.has_value()) return false;
    if (!one.chart) return true;
    const auto sameState = [](const auto& a, const auto& b) { return a.path == b.path && a.ssid == b.ssid; };
    const auto sameDatum = [](const auto& a, const auto& b) { return a.name == b.name && a.ssid == b.ssid; };
    return std::ranges::equal(one.chart->states, other.chart->states, sameState) &&
           std::ranges::equal(one.chart->data, other.chart->data, sameDatum);
}

std::optional<BlockChange> changeOf(const kestrel::Block& before, const kestrel::Block& after) {
    BlockChange change{&before, &after};
    change.isChartChanged = !isSameChart(before, after);
    if (before.outputs != after.outputs) {
        change.addedPorts = missing(after.outputs, before.outputs);
        change.removedPorts = missing(before.outputs, after.outputs);
        change.isReordered = isReordered(change);
    }
    const bool isSame = before.path == after.path && before.eid == after.eid && before.outputs == after.outputs &&
                        !change.isChartChanged;
    return isSame ? std::nullopt : std::optional(std::move(change));
}

void compareBlocks(const kestrel::Model& before, const kestrel::Model& after, ModelDiff& diff) {
    std::unordered_map<const kestrel::Block*, std::size_t> positions;
    for (const kestrel::Block& block : before.blocks()) positions.emplace(&block, positions.size());
    std::unordered_set<const kestrel::Block*> matched;
    std::vector<std::size_t> order;
    for (const kestrel::Block& block : after.blocks()) {
        const kestrel::Block* old = before.findByEid(block.eid);
        if (!old) old = before.findByPath(block.path);
        if (old && !matched.insert(old).second) old = nullptr;
        if (!old) {
            diff.blocks.push_back({nullptr, &block});
            continue;
        }
        order.push_back(positions[old]);
        if (auto change = changeOf(*old, block)) diff.blocks.push_back(std::move(*change));
    }
    for (const kestrel::Block& block : before.blocks())
        if (!matched.contains(&block)) diff.blocks.push_back({&block, nullptr});
    diff.areBlocksReordered = !std::is_sorted(order.begin(), order.end());
}

std::string parkedText(const ModelFile& file) {
    const kestrel::Model model(u"m");
    std::string text;
    for (const ParkedMark& mark : file.extras.parked) {
        text += fmt::format("{}{} {} {}\n", textOf(mark.lost), mark.isUnsure ? "?" : "", toUtf8(mark.from),
                            mark.markedName ? toUtf8(*mark.markedName) : "-");
        text += modelText(model, mark.signal.get(), mark.clients.get());
    }
    return text;
}

}  // namespace

std::string describeSignal(const hvArray* signals, std::size_t position) {
    const std::u16string block = recordText(signals, position, "BlockPath_");
    const std::u16string item = recordText(signals, position, "SubPath_");
    if (!item.empty()) return toUtf8(block + u"/" + item);
    if (!recordText(signals, position, "DomainType_").empty()) return toUtf8(block);
    return fmt::format("{}:{}", toUtf8(block), canonicalField(signals, position, "OutputPortIndex_"));
}

ModelDiff diffModels(const ModelFile& before, const ModelFile& after) {
    ModelDiff diff;
    if (before.model.name() != after.model.name())
        diff.name = FieldChange{"name", jsonIfThere(&before.model.name()), jsonIfThere(&after.model.name())};
    compareBlocks(before.model, after.model, diff);
    diff.signals = RecordsComparison(RecordKind::signal, before, after).run();
    diff.clients = RecordsComparison(RecordKind::client, before, after).run();
    diff.parkedBefore = before.extras.parked.size();
    diff.parkedAfter = after.extras.parked.size();
    diff.isParkedSame = parkedText(before) == parkedText(after);
    return diff;
}

}  // namespace workbench
