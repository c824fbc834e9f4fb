#include "workbench/carry/matching/source_pairing.h"

#include <algorithm>

#include "workbench/carry/matching/block_features.h"

namespace workbench {

namespace {

template <class Index>
void enterNumbers(Index& index, const kestrel::Block& block) {
    for (std::size_t i = 0; i < block.outputs.size(); ++i) index[block.outputs[i]].push_back(static_cast<int>(i) + 1);
}

}  // namespace

PortPairing::Names::Names(const kestrel::Block& oldBlock, const kestrel::Block& newBlock) {
    enterNumbers(old, oldBlock);
    enterNumbers(next, newBlock);
    for (const auto& [name, numbers] : old) lostCount += next.contains(name) ? 0 : numbers.size();
    for (const auto& [name, numbers] : next) {
        if (old.contains(name)) continue;
        addedCount += numbers.size();
        lastAdded = numbers.back();
        std::vector<int>& alike = added[plainName(name)];
        alike.insert(alike.end(), numbers.begin(), numbers.end());
    }
}

SourceMatch PortPairing::at(int number, SourceHow how, std::size_t candidates) const {
    return {how, number, m_next.outputs[static_cast<std::size_t>(number) - 1], 0, candidates};
}

SourceMatch PortPairing::of(std::u16string_view name, int number) {
    const bool isThere = number >= 1 && static_cast<std::size_t>(number) <= m_old.outputs.size();
    if (m_isSame && isThere && m_old.outputs[static_cast<std::size_t>(number) - 1] == name)
        return at(number, SourceHow::same);
    if (!m_names) m_names = std::make_unique<const Names>(m_old, m_next);
    const auto before = m_names->old.find(name);
    const auto after = m_names->next.find(name);
    if (after == m_names->next.end()) return renamed(name);
    static const std::vector<int> kNone;
    const std::vector<int>& numbers = before == m_names->old.end() ? kNone : before->second;
    if (numbers.size() <= 1 && after->second.size() == 1) return at(after->second.front(), SourceHow::same);
    return amongSeveral(numbers, after->second, number);
}

// Ports of one name are told apart only while nothing has changed around them.
SourceMatch PortPairing::amongSeveral(const std::vector<int>& before, const std::vector<int>& after, int number) const {
    const auto place = std::find(before.begin(), before.end(), number);
    if (place == before.end()) return {SourceHow::guess, 0, {}, 0, after.size()};
    if (m_isSame) return at(number, SourceHow::same);
    const auto occurrence = static_cast<std::size_t>(place - before.begin());
    if (before.size() == after.size()) return at(after[occurrence], SourceHow::guess, after.size());
    return {SourceHow::guess, 0, {}, 0, after.size()};
}

SourceMatch PortPairing::renamed(std::u16string_view name) const {
    if (const auto found = m_names->added.find(plainName(name)); found != m_names->added.end())
        return at(found->second.front(), SourceHow::guess, found->second.size());
    const bool isOnlyOne = m_names->lostCount == 1 && m_names->addedCount == 1 && m_names->old.contains(name);
    return isOnlyOne ? at(m_names->lastAdded, SourceHow::guess) : SourceMatch{};
}

ItemNames::ItemNames(const kestrel::Block* block) : hasChart(block && block->chart) {
    if (!hasChart) return;
    for (const kestrel::ChartState& state : block->chart->states) {
        states.bySubPath.emplace(state.path, state.ssid);
        states.bySsid.emplace(state.ssid, state.path);
    }
    for (const kestrel::ChartData& datum : block->chart->data) {
        data.bySubPath.emplace(datum.name, datum.ssid);
        data.bySsid.emplace(datum.ssid, datum.name);
    }
}

ItemPairing::ItemPairing(const kestrel::Block* old, const kestrel::Block& next) : m_old(old), m_new(&next) {}

SourceMatch ItemPairing::of(std::u16string_view domain, std::u16string_view path,
                            std::optional<std::uint32_t> ssid) const {
    if (!m_new.hasChart) return {};
    if (domain == u"cw_chart") return {SourceHow::same, 0, {}, 0, 1};
    const ItemNames::Items& items = m_new.of(domain);
    if (const auto found = items.bySubPath.find(path); found != items.bySubPath.end())
        return {SourceHow::same, 0, found->first, found->second, 1};
    if (!ssid) return {};
    const auto found = items.bySsid.find(*ssid);
    if (found == items.bySsid.end()) return {};
    const bool isElsewhere = m_old.of(domain).bySubPath.contains(found->second);
    const bool isSibling = parentView(path) == parentView(found->second);
    return {isSibling && !isElsewhere ? SourceHow::rule : SourceHow::guess, 0, found->second, *ssid, 1};
}

}  // namespace workbench
