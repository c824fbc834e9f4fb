#include "workbench/compare/source_pairing.h"

#include <algorithm>

#include "workbench/compare/block_features.h"

namespace workbench {

PortPairing::PortPairing(const kestrel::Block& old, const kestrel::Block& next)
    : m_next(next), m_isSame(old.outputs == next.outputs), m_old(numbersOf(old)), m_new(numbersOf(next)) {
    for (const auto& [name, numbers] : m_old) m_lostCount += m_new.contains(name) ? 0 : numbers.size();
    for (const auto& [name, numbers] : m_new) {
        if (m_old.contains(name)) continue;
        m_addedCount += numbers.size();
        m_lastAdded = numbers.back();
        std::vector<int>& added = m_added[plainName(name)];
        added.insert(added.end(), numbers.begin(), numbers.end());
    }
}

PortPairing::Index PortPairing::numbersOf(const kestrel::Block& block) {
    Index index;
    for (std::size_t i = 0; i < block.outputs.size(); ++i) index[block.outputs[i]].push_back(static_cast<int>(i) + 1);
    return index;
}

SourceMatch PortPairing::at(int number, SourceHow how, std::size_t candidates) const {
    return {how, number, m_next.outputs[static_cast<std::size_t>(number) - 1], 0, candidates};
}

SourceMatch PortPairing::of(const std::u16string& name, int number) const {
    const auto before = m_old.find(name);
    const auto after = m_new.find(name);
    if (after == m_new.end()) return renamed(name);
    static const std::vector<int> kNone;
    const std::vector<int>& numbers = before == m_old.end() ? kNone : before->second;
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

SourceMatch PortPairing::renamed(const std::u16string& name) const {
    if (const auto found = m_added.find(plainName(name)); found != m_added.end())
        return at(found->second.front(), SourceHow::guess, found->second.size());
    const bool isOnlyOne = m_lostCount == 1 && m_addedCount == 1 && m_old.contains(name);
    return isOnlyOne ? at(m_lastAdded, SourceHow::guess) : SourceMatch{};
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

SourceMatch ItemPairing::of(const std::u16string& domain, const std::u16string& path,
                            std::optional<std::uint32_t> ssid) const {
    if (!m_new.hasChart) return {};
    if (domain == u"cw_chart") return {SourceHow::same, 0, {}, 0, 1};
    const ItemNames::Items& items = m_new.of(domain);
    if (const auto found = items.bySubPath.find(path); found != items.bySubPath.end())
        return {SourceHow::same, 0, path, found->second, 1};
    if (!ssid) return {};
    const auto found = items.bySsid.find(*ssid);
    if (found == items.bySsid.end()) return {};
    const bool isElsewhere = m_old.of(domain).bySubPath.contains(found->second);
    const bool isSibling = parentOf(path) == parentOf(found->second);
    return {isSibling && !isElsewhere ? SourceHow::rule : SourceHow::guess, 0, found->second, *ssid, 1};
}

}  // namespace workbench
