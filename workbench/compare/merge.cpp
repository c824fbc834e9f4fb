#include "workbench/compare/merge.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <type_traits>
#include <unordered_map>
#include <unordered_set>

#include "host/values.h"
#include "workbench/compare/block_fields.h"
#include "workbench/compare/merged_records.h"
#include "workbench/compare/twice_added.h"
#include "workbench/compare/used_sources.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

// The blocks of a model by element identifier.
std::vector<std::uint32_t> eidsOf(const kestrel::Model& model, MergeKeys& keys) {
    std::vector<std::uint32_t> eids;
    for (const kestrel::Block& block : model.blocks()) eids.push_back(keys.of(block.eid));
    return eids;
}

// The ports of a block that a signal was put on, in the merged one.
struct MergedPorts {
    MergedPorts(const kestrel::Block& meant, const kestrel::Block& merged) : isSame(meant.outputs == merged.outputs) {
        if (isSame) return;
        for (std::size_t i = 0; i < merged.outputs.size(); ++i) {
            const auto [place, isNew] = numbers.emplace(merged.outputs[i], i + 1);
            if (!isNew) place->second = 0;
        }
    }
    bool isSame;
    std::unordered_map<std::u16string_view, std::size_t> numbers = {};  // 1-based; 0 where several have the name
};

class ModelMerge {
public:
    ModelMerge(const ModelFile& base, const ModelFile& ours, const ModelFile& theirs)
        : m_base(base), m_ours(ours), m_theirs(theirs), m_ourBlocks(ours.model), m_theirBlocks(theirs.model) {}

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
    void noteUse();
    void addBlocks(kestrel::Model& model);
    void settlePaths(std::vector<kestrel::Block>& blocks);
    void tellCrowded(const kestrel::Block& block, const kestrel::Block* ours, const std::string& owner);
    void followNames(const kestrel::Model& model);
    bool followName(SavedBlocks& blocks, MergedRecord& signal);
    const MergedPorts& portsOf(const kestrel::Block& meant, const kestrel::Block& merged);
    void build(ModelFile& file);
    void mergeParked(ModelFile& file);

    const ModelFile& m_base;
    const ModelFile& m_ours;
    const ModelFile& m_theirs;
    SavedBlocks m_ourBlocks, m_theirBlocks;
    MergedRecords m_signals, m_clients;
    std::map<std::pair<const kestrel::Block*, const kestrel::Block*>, MergedPorts> m_ports;
    std::unordered_set<std::string> m_usedEids;
    UsedSources m_used;  // by signals that we placed, of blocks that are not the same in theirs
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
    if (isSame(ours.*member, theirs.*member)) return ours.*member;
    const std::string oursJson = jsonOf(ours.*member);
    const std::string theirsJson = jsonOf(theirs.*member);
    const std::string baseJson = base ? jsonOf(base->*member) : "";
    if (oursJson == theirsJson || (base && theirsJson == baseJson)) return ours.*member;
    if (base && oursJson == baseJson) return theirs.*member;
    if constexpr (!std::is_same_v<Value, std::u16string>)
        if (base)
            if (auto both = withBothAdditions(base->*member, ours.*member, theirs.*member))
                return Value(std::move(*both));
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
    const auto keepOurs = [&](const char* field, const std::string& oursJson, const std::string& theirsJson) {
        m_conflicts.push_back({"blocks", eid, field, "", oursJson, theirsJson,
                               "they took something out that signals are on; ours stays"});
    };
    if (!m_used.arePortsIn(*ours, merged.outputs)) {
        keepOurs("outputs", jsonOf(ours->outputs), jsonOf(theirs->outputs));
        merged.outputs = ours->outputs;
    }
    if (!m_used.areItemsIn(*ours, merged)) {
        keepOurs("chart", jsonOf(ours->chart), jsonOf(theirs->chart));
        merged.chart = ours->chart;
    }
    return merged;
}

void ModelMerge::noteUse() {
    const kestrel::Block* last = nullptr;
    bool isSameInTheirs = false;
    for (const MergedRecord& signal : m_signals.records) {
        const kestrel::Block* const block = m_ourBlocks.of(signal.place());
        if (block && block != last) {
            m_usedEids.insert(block->eid);
            const kestrel::Block* const theirs = m_theirs.model.findByEid(block->eid);
            isSameInTheirs = !theirs || isSame(*block, *theirs);
        }
        if (block && !isSameInTheirs && !signal.isPlacedByThem) m_used.note(*block, signal.place());
        last = block;
    }
}

void ModelMerge::addBlocks(kestrel::Model& model) {
    noteUse();
    std::vector<kestrel::Block> blocks;
    MergeKeys keys;
    const auto base = eidsOf(m_base.model, keys), ours = eidsOf(m_ours.model, keys);
    const auto theirs = eidsOf(m_theirs.model, keys);
    const auto stays = [&](std::uint32_t eid) { return staysBlock(keys.text(eid)); };
    for (const std::uint32_t eid : mergedOrder(keys, base, ours, theirs, stays))
        blocks.push_back(mergedBlock(keys.text(eid)));
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
    SavedBlocks blocks(model);
    std::erase_if(m_signals.records, [&](MergedRecord& signal) { return !followName(blocks, signal); });
}

const MergedPorts& ModelMerge::portsOf(const kestrel::Block& meant, const kestrel::Block& merged) {
    return m_ports.try_emplace({&meant, &merged}, meant, merged).first->second;
}

bool ModelMerge::followName(SavedBlocks& blocks, MergedRecord& signal) {
    const RecordPlace& place = signal.place();
    const std::u16string_view path = recordView(place.records, place.position, "BlockPath_");
    const std::u16string_view eid = recordView(place.records, place.position, "EID_");
    const kestrel::Block* const block = blocks.of(eid, path);
    const bool isOurs = signal.ours.records != nullptr;
    const auto conflict = [&](const char* text, const char* field = "OutputPortIndex_") {
        const std::string value = canonicalField(place.records, place.position, field);
        m_conflicts.push_back(
            {"signals", m_signals.keys.text(signal.key), field, "", isOurs ? value : "", isOurs ? "" : value,
             fmt::format("{}: the mark on {} {}", text, inQuotes(path), isOurs ? "stays as it is" : "is left out")});
        return isOurs;
    };
    if (!block) return isOurs && !m_ourBlocks.of(eid, path) ? true : conflict("its block is not in the merged model");
    const kestrel::Block* const meant = (signal.isPlacedByThem ? m_theirBlocks : m_ourBlocks).of(eid, path);
    if (!recordView(place.records, place.position, "DomainType_").empty()) {
        const bool isThere =
            !meant || hasItemOf(*block, *meant, domainParameter(place.records, place.position, "SSID"));
        return isThere ? true : conflict("its chart item is not in the merged block", "DomainParams_");
    }
    const auto number = static_cast<std::size_t>(
        ks_host::numberAt(hvGetField(place.records, place.position, "OutputPortIndex_")).value_or(0.0));
    if (!meant || number < 1 || number > meant->outputs.size()) return true;
    const MergedPorts& ports = portsOf(*meant, *block);
    const std::u16string& name = meant->outputs[number - 1];
    if (ports.isSame || (number <= block->outputs.size() && block->outputs[number - 1] == name)) return true;
    const auto found = ports.numbers.find(name);
    if (found == ports.numbers.end() || found->second == 0)
        return conflict("its port is not in the merged block, or not by a name of its own");
    signal.newPort = found->second;
    return true;
}

void ModelMerge::build(ModelFile& file) {
    for (const MergedRecord& signal : m_signals.records)
        file.extras.markedNames.push_back(signal.markedName ? std::optional(*signal.markedName) : std::nullopt);
    file.signals = builtRecords(RecordKind::signal, m_signals.records);
    file.clients = builtRecords(RecordKind::client, m_clients.records);
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
    for (const MergedRecord& signal : m_signals.records)
        if (!m_theirs.extras.parked.empty())
            taken.insert(recordText(signal.place().records, signal.place().position, "UUID"));
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
