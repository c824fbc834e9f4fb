#include "workbench/session/marked_names.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>

#include "signals/signal_specification.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

using ks_hmi::SignalSpecification;

// A port's name has no NUL in it.
std::u16string placeKey(const std::u16string& domain, const std::u16string& name) { return domain + u'\0' + name; }

std::string placeNames(const std::vector<std::uint32_t>& places, bool isItem) {
    constexpr std::size_t kMostNamed = 4;
    std::string list = isItem ? "the item with the SSID " : "port ";
    for (std::size_t i = 0; i < std::min(places.size(), kMostNamed); ++i)
        list += fmt::format("{}{}", i == 0 ? "" : i + 1 == places.size() ? " or " : ", ", places[i]);
    return places.size() > kMostNamed ? fmt::format("{} and {} more", list, places.size() - kMostNamed) : list;
}

}  // namespace

const std::u16string* NameChecker::nameOn(const kestrel::Block& block, const SignalSpecification& signal) {
    if (isChartSignal(signal)) {
        // As the chart has it now, whatever path is saved with the signal.
        const std::optional<std::uint32_t> ssid = ssidOf(signal);
        const ChartItem* const item = ssid ? m_items.find(block, *ssid) : nullptr;
        return item && item->domainType == signal.m_domainType ? &item->subPath : nullptr;
    }
    const auto port = static_cast<std::size_t>(signal.m_outputPortIndex);
    const bool isThere = signal.m_outputPortIndex >= 1 && port <= block.outputs.size();
    return isThere ? &block.outputs[port - 1] : nullptr;
}

std::optional<std::u16string> NameChecker::nameNow(const SignalSpecification& signal) {
    const kestrel::Block* const block = blockOf(m_model, signal);
    const std::u16string* const name = block ? nameOn(*block, signal) : nullptr;
    return name ? std::optional(*name) : std::nullopt;
}

bool NameChecker::isConfirmed(const SignalSpecification& signal, const std::u16string& markedName) {
    const bool isForeign = !signal.m_domainType.empty() && !isChartSignal(signal);
    const kestrel::Block* const block = isForeign ? nullptr : blockOf(m_model, signal);
    const std::u16string* const name = block ? nameOn(*block, signal) : nullptr;
    return name && *name == markedName;
}

NameCheck NameChecker::check(const SignalSpecification& signal, const std::u16string* markedName) {
    const kestrel::Block* const block = blockOf(m_model, signal);
    const bool isForeign = !signal.m_domainType.empty() && !isChartSignal(signal);
    NameCheck result{NameState::unknown, markedName ? *markedName : std::u16string()};
    if (!block || isForeign) return result;
    if (const std::u16string* const name = nameOn(*block, signal)) result.nameNow = *name;
    result.state = NameState::unconfirmed;
    if (!markedName) return result;
    result.state = NameState::confirmed;
    if (result.nameNow == *markedName) return result;
    result.places = placesOf(*block, signal, *markedName);
    result.state = result.places.empty()       ? NameState::gone
                   : result.places.size() == 1 ? NameState::moved
                                               : NameState::ambiguous;
    return result;
}

NameChecker::Places NameChecker::placesIn(const kestrel::Block& block) {
    Places places;
    for (std::size_t i = 0; i < block.outputs.size(); ++i)
        places[block.outputs[i]].push_back(static_cast<std::uint32_t>(i + 1));
    for (const ChartItem& item : chartItemsOf(block))
        places[placeKey(item.domainType, item.subPath)].push_back(item.ssid);
    return places;
}

std::vector<std::uint32_t> NameChecker::placesOf(const kestrel::Block& block, const SignalSpecification& signal,
                                                 const std::u16string& name) {
    const auto [places, isNew] = m_places.try_emplace(&block);
    if (isNew) places->second = placesIn(block);
    const auto found = places->second.find(isChartSignal(signal) ? placeKey(signal.m_domainType, name) : name);
    return found == places->second.end() ? std::vector<std::uint32_t>() : found->second;
}

std::string describe(const std::string& what, const NameCheck& name, bool isItem) {
    const std::string marked = fmt::format("{} was marked as {}, ", what, inQuotes(name.markedName));
    const std::string now = name.nameNow ? fmt::format(" ({} is here now)", inQuotes(*name.nameNow)) : "";
    switch (name.state) {
        case NameState::moved:
            return fmt::format("{}which is {} now{}", marked, placeNames(name.places, isItem), now);
        case NameState::ambiguous:
            return fmt::format("{}which may be {} now{}", marked, placeNames(name.places, isItem), now);
        case NameState::gone:
            return fmt::format("{}which the block does not have any more{}", marked, now);
        case NameState::unconfirmed:
            return what + " was marked before names were kept";
        default:
            return what;
    }
}

void MarkedNames::take(std::size_t first, const MarkedNameList& saved, NameChecker& checker) {
    for (std::size_t i = first; i < m_set.getCount(); ++i) {
        const bool isNamed = i - first < saved.size() && saved[i - first];
        if (isNamed && checker.isConfirmed(*m_set.get(i), *saved[i - first])) continue;
        m_kept.push_back({m_set.share(i), isNamed ? saved[i - first] : std::nullopt});
    }
}

std::vector<std::size_t> MarkedNames::inOrder() const {
    std::vector<std::size_t> order(m_set.getCount(), kNone);
    std::unordered_map<const SignalSpecification*, std::size_t> byRecord;
    for (std::size_t i = 0; i < m_kept.size(); ++i) byRecord.emplace(m_kept[i].signal.get(), i);
    std::vector<bool> isFound(m_kept.size(), false);
    for (std::size_t i = 0; i < order.size(); ++i)
        if (const auto found = byRecord.find(m_set.get(i)); found != byRecord.end()) {
            order[i] = found->second;
            isFound[found->second] = true;
        }
    // Binding may put new records in the places of the old ones; several may have the same UUID.
    std::unordered_map<std::string_view, std::vector<std::size_t>> byUuid;
    for (std::size_t i = m_kept.size(); i-- > 0;)
        if (!isFound[i]) byUuid[m_kept[i].signal->m_uuid].push_back(i);
    for (std::size_t i = 0; !byUuid.empty() && i < order.size(); ++i) {
        const auto found = order[i] == kNone ? byUuid.find(m_set.get(i)->m_uuid) : byUuid.end();
        if (found == byUuid.end() || found->second.empty()) continue;
        order[i] = found->second.back();
        found->second.pop_back();
    }
    return order;
}

std::vector<UnsettledMark> MarkedNames::unsettled() const {
    std::vector<UnsettledMark> marks;
    if (m_kept.empty()) return marks;
    NameChecker checker(m_model);
    const std::vector<std::size_t> order = inOrder();
    for (std::size_t i = 0; i < order.size(); ++i) {
        if (order[i] == kNone || !m_kept[order[i]].name) continue;
        const SignalSpecification& signal = *m_set.get(i);
        NameCheck name = checker.check(signal, &*m_kept[order[i]].name);
        const bool isElsewhere = name.state == NameState::moved || name.state == NameState::ambiguous;
        const bool isRenamed = name.state == NameState::gone && name.nameNow;
        if (isElsewhere || isRenamed) marks.push_back({i, std::move(name), isChartSignal(signal)});
    }
    return marks;
}

std::vector<std::size_t> MarkedNames::unconfirmed() const {
    std::vector<std::size_t> positions;
    if (m_kept.empty()) return positions;
    const std::vector<std::size_t> order = inOrder();
    for (std::size_t i = 0; i < order.size(); ++i)
        if (order[i] != kNone && !m_kept[order[i]].name) positions.push_back(i);
    return positions;
}

std::vector<std::size_t> MarkedNames::confirm(const std::vector<std::size_t>& positions) {
    std::vector<std::size_t> confirmed;
    const std::vector<std::size_t> order = inOrder();
    NameChecker checker(m_model);
    for (const std::size_t position : positions) {
        const std::optional<std::u16string> now = checker.nameNow(*m_set.get(position));
        if (order[position] != kNone && now && m_kept[order[position]].name != now) confirmed.push_back(position);
    }
    drop(confirmed, order);
    return confirmed;
}

void MarkedNames::forget(const std::vector<std::size_t>& positions) {
    if (!m_kept.empty()) drop(positions, inOrder());
}

void MarkedNames::drop(const std::vector<std::size_t>& positions, const std::vector<std::size_t>& order) {
    for (const std::size_t position : positions)
        if (order[position] != kNone) m_kept[order[position]].signal.reset();
    std::erase_if(m_kept, [](const Kept& one) { return !one.signal; });
}

MarkedNames::Saver::Saver(const MarkedNames& names) : m_names(names), m_checker(names.m_model) {
    if (!names.m_kept.empty()) m_order = names.inOrder();
}

std::optional<std::u16string> MarkedNames::Saver::nameOf(const SignalSpecification& signal, std::size_t position) {
    const std::size_t kept = m_order.empty() ? kNone : m_order[position];
    return kept == kNone ? m_checker.nameNow(signal) : m_names.m_kept[kept].name;
}

}  // namespace workbench
