#include "workbench/compare/twice_added.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "host/values.h"
#include "workbench/compare/saved_records.h"
#include "workbench/text/fresh_numbers.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

using kestrel::Block;
using kestrel::Chart;
using kestrel::ChartData;
using kestrel::ChartState;

const std::u16string& nameOf(const std::u16string& name) { return name; }
const std::u16string& nameOf(const ChartState& state) { return state.path; }
const std::u16string& nameOf(const ChartData& datum) { return datum.name; }
bool isSameItem(const std::u16string& one, const std::u16string& other) { return one == other; }
template <class Item>
bool isSameItem(const Item& one, const Item& other) {
    return nameOf(one) == nameOf(other) && one.ssid == other.ssid;
}

// Whether a list is another with something added, and each name is there once.
template <class Item>
bool isExtended(const std::vector<Item>& base, const std::vector<Item>& list) {
    std::unordered_set<std::u16string_view> names;
    auto next = base.begin();
    for (const Item& item : list) {
        if (!names.insert(nameOf(item)).second) return false;
        if (next != base.end() && isSameItem(*next, item)) ++next;
    }
    return next == base.end();
}

// Theirs come behind what they stand behind in theirs, and behind what we put in there.
template <class Item>
std::optional<std::vector<Item>> bothExtended(const std::vector<Item>& base, const std::vector<Item>& ours,
                                              const std::vector<Item>& theirs) {
    if (!isExtended(base, ours) || !isExtended(base, theirs)) return std::nullopt;
    std::unordered_map<std::u16string_view, std::size_t> inOurs;
    for (const Item& item : ours) inOurs.emplace(nameOf(item), inOurs.size());
    std::unordered_set<std::u16string_view> inTheirs;
    for (const Item& item : theirs) inTheirs.insert(nameOf(item));
    std::vector<Item> merged;
    std::size_t next = 0;  // of ours
    for (const Item& item : theirs) {
        const auto found = inOurs.find(nameOf(item));
        if (found == inOurs.end()) {
            while (next < ours.size() && !inTheirs.contains(nameOf(ours[next]))) merged.push_back(ours[next++]);
            merged.push_back(item);
            continue;
        }
        if (!isSameItem(ours[found->second], item)) return std::nullopt;
        while (next <= found->second) merged.push_back(ours[next++]);
    }
    while (next < ours.size()) merged.push_back(ours[next++]);
    return merged;
}

void noteItems(const Chart& chart, FreshNumbers& numbers) {
    for (const ChartState& state : chart.states) numbers.note(std::uint64_t{state.ssid});
    for (const ChartData& datum : chart.data) numbers.note(std::uint64_t{datum.ssid});
}

// What an item is: "s" or "d" with its name, by its number.
using Items = std::unordered_map<std::uint32_t, std::u16string>;

Items itemsOf(const Chart& chart) {
    Items items;
    for (const ChartState& state : chart.states) items.emplace(state.ssid, u's' + state.path);
    for (const ChartData& datum : chart.data) items.emplace(datum.ssid, u'd' + datum.name);
    return items;
}
Items itemsOf(const Block* block) { return block && block->chart ? itemsOf(*block->chart) : Items{}; }

class Apart {
public:
    Apart(const ModelFile& base, const ModelFile& ours, ModelFile& theirs)
        : m_base(base), m_ours(ours), m_theirs(theirs) {}

    void run() {
        findBlocks();
        findItems();
        if (m_eids.empty() && m_items.empty()) return;
        changeRecords();
        changeModel();
    }

private:
    void findBlocks() {
        FreshNumbers numbers;
        for (const ModelFile* const file : {&m_base, &m_ours, static_cast<const ModelFile*>(&m_theirs)})
            for (const Block& block : file->model.blocks()) numbers.note(block.eid);
        for (const Block& block : m_theirs.model.blocks()) {
            const Block* const ours = m_ours.model.findByEid(block.eid);
            if (ours && ours->path != block.path && !m_base.model.findByEid(block.eid))
                m_eids.emplace(block.eid, std::to_string(numbers.next()));
        }
    }
    void findItems() {
        for (const Block& block : m_theirs.model.blocks())
            if (block.chart && !m_eids.contains(block.eid)) findItems(block);
    }
    void findItems(const Block& block) {
        const Block* const oursBlock = m_ours.model.findByEid(block.eid);
        const Items ours = itemsOf(oursBlock);
        if (ours.empty()) return;
        const Block* const baseBlock = m_base.model.findByEid(block.eid);
        const Items base = itemsOf(baseBlock);
        FreshNumbers numbers(std::numeric_limits<std::uint32_t>::max());
        for (const Block* const one : {&block, oursBlock, baseBlock})
            if (one && one->chart) noteItems(*one->chart, numbers);
        for (const auto& [ssid, item] : itemsOf(&block)) {
            const auto found = ours.find(ssid);
            if (found == ours.end() || found->second == item || base.contains(ssid)) continue;
            m_items[block.eid].emplace(ssid, static_cast<std::uint32_t>(numbers.next()));
        }
    }

    void changeRecords() {
        hvArray* const signals = m_theirs.signals.get();
        SavedBlocks blocks(m_theirs.model);
        for (const std::size_t i : ks_host::indicesOf(signals)) {
            const Block* const block = blocks.of({signals, i});
            if (!block) continue;
            if (const auto items = m_items.find(block->eid); items != m_items.end())
                changeSsid(signals, i, items->second);
            if (const auto eid = m_eids.find(block->eid); eid != m_eids.end())
                setRecordText(signals, i, "EID_", toUtf16(eid->second));
        }
        if (m_eids.empty()) return;
        for (const std::size_t i : ks_host::indicesOf(m_theirs.clients.get())) changeClient(m_theirs.clients.get(), i);
    }
    static void changeSsid(hvArray* signals, std::size_t position,
                           const std::unordered_map<std::uint32_t, std::uint32_t>& items) {
        const std::u16string ssid(domainParameter(signals, position, "SSID"));
        for (const auto& [before, after] : items) {
            if (ssid != toUtf16(std::to_string(before))) continue;
            HvArrayPtr parameters(hvCreateDeepCopy(hvGetField(signals, position, "DomainParams_")));
            hvReplaceField(parameters.get(), 0, "SSID", ks_host::makeText(std::to_string(after)).release());
            hvReplaceField(signals, position, "DomainParams_", parameters.release());
            return;
        }
    }
    // Only the first block of its path is in this model.
    void changeClient(hvArray* clients, std::size_t position) {
        const std::u16string model = recordText(clients, position, "SourceModel_");
        const hvArray* const eids = hvGetField(clients, position, "ModelPathEID_");
        if ((!model.empty() && model != m_theirs.model.name()) || hvGetNumberOfElements(eids) == 0) return;
        const auto found = m_eids.find(ks_host::utf8TextOf(hvGetCell(eids, 0)));
        if (found == m_eids.end()) return;
        HvArrayPtr changed(hvCreateDeepCopy(eids));
        hvSetCell(changed.get(), 0, ks_host::makeText(found->second).release());
        hvReplaceField(clients, position, "ModelPathEID_", changed.release());
    }

    void changeModel() {
        kestrel::Model changed(m_theirs.model.name());
        for (Block block : m_theirs.model.blocks()) {
            if (const auto items = m_items.find(block.eid); items != m_items.end()) {
                for (ChartState& state : block.chart->states) change(state.ssid, items->second);
                for (ChartData& datum : block.chart->data) change(datum.ssid, items->second);
            }
            if (const auto eid = m_eids.find(block.eid); eid != m_eids.end()) block.eid = eid->second;
            changed.add(std::move(block));
        }
        m_theirs.model = std::move(changed);
    }
    static void change(std::uint32_t& ssid, const std::unordered_map<std::uint32_t, std::uint32_t>& items) {
        if (const auto found = items.find(ssid); found != items.end()) ssid = found->second;
    }

    const ModelFile& m_base;
    const ModelFile& m_ours;
    ModelFile& m_theirs;
    std::unordered_map<std::string, std::string> m_eids;
    std::unordered_map<std::string, std::unordered_map<std::uint32_t, std::uint32_t>> m_items;  // by block
};

}  // namespace

void tellApart(const ModelFile& base, const ModelFile& ours, ModelFile& theirs) { Apart(base, ours, theirs).run(); }

std::optional<std::vector<std::u16string>> withBothAdditions(const std::vector<std::u16string>& base,
                                                             const std::vector<std::u16string>& ours,
                                                             const std::vector<std::u16string>& theirs) {
    return bothExtended(base, ours, theirs);
}

std::optional<Chart> withBothAdditions(const std::optional<Chart>& base, const std::optional<Chart>& ours,
                                       const std::optional<Chart>& theirs) {
    if (!base || !ours || !theirs) return std::nullopt;
    auto states = bothExtended(base->states, ours->states, theirs->states);
    auto data = bothExtended(base->data, ours->data, theirs->data);
    if (!states || !data) return std::nullopt;
    Chart merged{std::move(*states), std::move(*data)};
    const bool isNumbered = itemsOf(merged).size() == merged.states.size() + merged.data.size();
    return isNumbered ? std::optional(std::move(merged)) : std::nullopt;
}

}  // namespace workbench
