#include "workbench/compare/merge.h"

#include <fmt/format.h>

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

#include "host/values.h"
#include "workbench/compare/merged_records.h"
#include "workbench/json/json_object.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

std::string jsonOf(std::u16string_view text) {
    std::string out;
    appendJsonText(out, text);
    return out;
}

std::string jsonOf(const std::vector<std::u16string>& names) {
    std::string out;
    appendJsonTexts(out, names);
    return out;
}

std::string jsonOf(const std::optional<kestrel::Chart>& chart) {
    if (!chart) return "";
    std::string out;
    for (const kestrel::ChartState& state : chart->states)
        out += fmt::format("{} {}, ", jsonOf(state.path), state.ssid);
    for (const kestrel::ChartData& datum : chart->data) out += fmt::format("{} {}, ", jsonOf(datum.name), datum.ssid);
    if (!out.empty()) out.resize(out.size() - 2);
    return fmt::format("{{{}}}", out);
}

bool isSame(const kestrel::Block& one, const kestrel::Block& other) {
    return one.path == other.path && one.outputs == other.outputs && jsonOf(one.chart) == jsonOf(other.chart);
}

// The blocks of a model by element identifier.
std::vector<std::string> eidsOf(const kestrel::Model& model) {
    std::vector<std::string> eids;
    for (const kestrel::Block& block : model.blocks()) eids.push_back(block.eid);
    return eids;
}

class ModelMerge {
public:
    ModelMerge(const ModelFile& base, const ModelFile& ours, const ModelFile& theirs)
        : m_base(base), m_ours(ours), m_theirs(theirs) {}

    MergedModel run() {
        m_signals = mergeRecords(RecordKind::signal, m_base, m_ours, m_theirs, m_conflicts);
        m_clients = mergeRecords(RecordKind::client, m_base, m_ours, m_theirs, m_conflicts);
        MergedModel merged{newModelFile(mergedName()), {}};
        addBlocks(merged.file.model);
        followNames(merged.file.model);
        build(merged.file);
        mergeParked(merged.file);
        merged.conflicts = std::move(m_conflicts);
        return merged;
    }

private:
    std::u16string mergedName();
    template <class Value>
    Value mergeField(const char* field, const kestrel::Block* base, const kestrel::Block& ours,
                     const kestrel::Block& theirs, Value kestrel::Block::*member);
    bool staysBlock(const std::string& eid);
    kestrel::Block mergedBlock(const std::string& eid);
    void addBlocks(kestrel::Model& model);
    void settlePaths(std::vector<kestrel::Block>& blocks);
    void tellCrowded(const kestrel::Block& block, const kestrel::Block* ours, const std::string& owner);
    void followNames(const kestrel::Model& model);
    bool followName(const kestrel::Model& model, MergedRecord& signal);
    void build(ModelFile& file);
    void mergeParked(ModelFile& file);

    const ModelFile& m_base;
    const ModelFile& m_ours;
    const ModelFile& m_theirs;
    std::vector<MergedRecord> m_signals, m_clients;
    std::unordered_set<std::string> m_usedEids;
    std::vector<MergeConflict> m_conflicts;
};

std::u16string ModelMerge::mergedName() {
    const std::u16string& base = m_base.model.name();
    const std::u16string& ours = m_ours.model.name();
    const std::u16string& theirs = m_theirs.model.name();
    if (ours == theirs || theirs == base) return ours;
    if (ours == base) return theirs;
    m_conflicts.push_back({"model", "", "name", jsonOf(base), jsonOf(ours), jsonOf(theirs),
                           "both renamed the model, and differently; ours stays"});
    return ours;
}

template <class Value>
Value ModelMerge::mergeField(const char* field, const kestrel::Block* base, const kestrel::Block& ours,
                             const kestrel::Block& theirs, Value kestrel::Block::*member) {
    const std::string oursJson = jsonOf(ours.*member);
    const std::string theirsJson = jsonOf(theirs.*member);
    const std::string baseJson = base ? jsonOf(base->*member) : "";
    if (oursJson == theirsJson || (base && theirsJson == baseJson)) return ours.*member;
    if (base && oursJson == baseJson) return theirs.*member;
    m_conflicts.push_back(
        {"blocks", ours.eid, field, baseJson, oursJson, theirsJson, "both changed it, and differently; ours stays"});
    return ours.*member;
}

bool ModelMerge::staysBlock(const std::string& eid) {
    const kestrel::Block* const base = m_base.model.findByEid(eid);
    const kestrel::Block* const ours = m_ours.model.findByEid(eid);
    const kestrel::Block* const theirs = m_theirs.model.findByEid(eid);
    const Presence presence = presenceOf(base, ours, theirs, base && ours && !isSame(*base, *ours),
                                         base && theirs && !isSame(*base, *theirs));
    const bool isUsed = ours && presence == Presence::out && m_usedEids.contains(eid);
    if (isUsed || presence == Presence::conflictIn || presence == Presence::conflictOut)
        m_conflicts.push_back({"blocks", eid, "", "present", ours ? "present" : "", theirs ? "present" : "",
                               isUsed ? "they removed the block, and signals are on it; it stays"
                               : ours ? "they removed the block, and it has changed in ours; it stays"
                                      : "the block was removed in ours, and they changed it; it stays removed"});
    return isUsed || presence == Presence::in || presence == Presence::conflictIn;
}

kestrel::Block ModelMerge::mergedBlock(const std::string& eid) {
    const kestrel::Block* const base = m_base.model.findByEid(eid);
    const kestrel::Block* const ours = m_ours.model.findByEid(eid);
    const kestrel::Block* const theirs = m_theirs.model.findByEid(eid);
    kestrel::Block merged = ours ? *ours : *theirs;
    merged.handle = 0.0;
    if (!ours || !theirs) return merged;
    merged.path = mergeField("path", base, *ours, *theirs, &kestrel::Block::path);
    merged.outputs = mergeField("outputs", base, *ours, *theirs, &kestrel::Block::outputs);
    merged.chart = mergeField("chart", base, *ours, *theirs, &kestrel::Block::chart);
    return merged;
}

void ModelMerge::addBlocks(kestrel::Model& model) {
    for (const MergedRecord& signal : m_signals)
        if (const kestrel::Block* const block = savedBlock(m_ours.model, signal.record.get(), 0))
            m_usedEids.insert(block->eid);
    std::vector<kestrel::Block> blocks;
    const auto stays = [this](const std::string& eid) { return staysBlock(eid); };
    for (const std::string& eid :
         mergedOrder(eidsOf(m_base.model), eidsOf(m_ours.model), eidsOf(m_theirs.model), stays))
        blocks.push_back(mergedBlock(eid));
    settlePaths(blocks);
    for (kestrel::Block& block : blocks) model.add(std::move(block));
}

// Two blocks at one path: the one that is there in ours has it, the other goes back to where it is in ours, or is left
// out. Going back may displace another, which came later.
void ModelMerge::settlePaths(std::vector<kestrel::Block>& blocks) {
    for (bool isSettled = false; !isSettled;) {
        isSettled = true;
        std::unordered_map<std::u16string, std::string> owners;
        std::unordered_set<std::string> leftOut;
        for (const bool isOursTurn : {true, false})
            for (kestrel::Block& block : blocks) {
                const kestrel::Block* const ours = m_ours.model.findByEid(block.eid);
                const bool isAsInOurs = ours && ours->path == block.path;
                if (isAsInOurs != isOursTurn || owners.emplace(block.path, block.eid).second) continue;
                tellCrowded(block, ours, owners[block.path]);
                isSettled = false;
                ours ? static_cast<void>(block.path = ours->path) : static_cast<void>(leftOut.insert(block.eid));
            }
        std::erase_if(blocks, [&](const kestrel::Block& block) { return leftOut.contains(block.eid); });
    }
}

void ModelMerge::tellCrowded(const kestrel::Block& block, const kestrel::Block* ours, const std::string& owner) {
    m_conflicts.push_back({"blocks", block.eid, "path", "", ours ? jsonOf(ours->path) : "", jsonOf(block.path),
                           fmt::format("the block with the identifier {} is at {}; {}", inQuotes(owner),
                                       inQuotes(block.path), ours ? "ours stays" : "theirs is left out")});
}

// A number that meant one port on the side where it was set may be another port's in the merged block.
void ModelMerge::followNames(const kestrel::Model& model) {
    std::erase_if(m_signals, [&](MergedRecord& signal) { return !followName(model, signal); });
}

bool ModelMerge::followName(const kestrel::Model& model, MergedRecord& signal) {
    hvArray* const record = signal.record.get();
    const kestrel::Block* const block = savedBlock(model, record, 0);
    const bool isOurs = signal.ours.records != nullptr;
    const auto conflict = [&](const char* text) {
        m_conflicts.push_back({"signals", signal.key, "OutputPortIndex_", "",
                               isOurs ? canonicalField(record, 0, "OutputPortIndex_") : "",
                               isOurs ? "" : canonicalField(record, 0, "OutputPortIndex_"), text});
        return isOurs;
    };
    if (!block) return isOurs && !savedBlock(m_ours.model, record, 0) ? true : conflict("its block was removed");
    if (!recordText(record, 0, "DomainType_").empty()) return true;
    const ModelFile& side = signal.isPlacedByThem ? m_theirs : m_ours;
    const kestrel::Block* const meant = savedBlock(side.model, record, 0);
    const auto number =
        static_cast<std::size_t>(ks_host::numberAt(hvGetField(record, 0, "OutputPortIndex_")).value_or(0.0));
    if (!meant || number < 1 || number > meant->outputs.size() || meant->outputs == block->outputs) return true;
    const std::u16string& name = meant->outputs[number - 1];
    if (number <= block->outputs.size() && block->outputs[number - 1] == name) return true;
    const auto found = std::ranges::find(block->outputs, name);
    if (found == block->outputs.end() || std::ranges::count(block->outputs, name) > 1)
        return conflict("its port is not in the merged block, or not by a name of its own");
    const auto place = static_cast<double>(found - block->outputs.begin()) + 1.0;
    hvReplaceField(record, 0, "OutputPortIndex_", ks_host::makeDouble(place).release());
    return true;
}

void ModelMerge::build(ModelFile& file) {
    std::vector<RecordPlace> signals;
    std::vector<RecordPlace> clients;
    for (const MergedRecord& signal : m_signals) {
        signals.push_back({signal.record.get(), 0});
        file.extras.markedNames.push_back(signal.markedName);
    }
    for (const MergedRecord& client : m_clients) clients.push_back({client.record.get(), 0});
    file.signals = copyRecords(RecordKind::signal, signals);
    file.clients = copyRecords(RecordKind::client, clients);
}

// Ours, without what they gave back, and with what they parked.
void ModelMerge::mergeParked(ModelFile& file) {
    const auto uuidOf = [](const ParkedMark& mark) { return recordText(mark.signal.get(), 0, "UUID"); };
    const auto uuidsOf = [&](const ModelFile& of) {
        std::unordered_set<std::u16string> uuids;
        for (const ParkedMark& mark : of.extras.parked) uuids.insert(uuidOf(mark));
        return uuids;
    };
    const auto inBase = uuidsOf(m_base), inTheirs = uuidsOf(m_theirs);
    auto taken = uuidsOf(m_ours);
    for (const MergedRecord& signal : m_signals) taken.insert(recordText(signal.record.get(), 0, "UUID"));
    const auto copy = [&](const ParkedMark& mark) { file.extras.parked.push_back(copyOf(mark)); };
    for (const ParkedMark& mark : m_ours.extras.parked)
        if (inTheirs.contains(uuidOf(mark)) || !inBase.contains(uuidOf(mark))) copy(mark);
    for (const ParkedMark& mark : m_theirs.extras.parked)
        if (!taken.contains(uuidOf(mark)) && !inBase.contains(uuidOf(mark))) copy(mark);
}

}  // namespace

MergedModel mergeModels(const ModelFile& base, const ModelFile& ours, const ModelFile& theirs) {
    return ModelMerge(base, ours, theirs).run();
}

}  // namespace workbench
