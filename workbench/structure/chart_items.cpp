#include "workbench/structure/chart_items.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>

#include "signals/signal_specification.h"
#include "workbench/structure/blocks.h"
#include "workbench/text/error.h"
#include "workbench/text/fresh_numbers.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

using kestrel::Block;
using kestrel::Chart;

void requireItem(const ChartItem& item) {
    if (item.domainType == kChartDomain) throw Error("the chart itself is a block; name a state or datum in it");
}

void requireFree(const Block& block, std::u16string_view domain, const std::u16string& name) {
    for (const ChartItem& item : chartItemsOf(block))
        if (item.domainType == domain && item.subPath == name)
            throw Error(fmt::format("the chart {} has {} already, with the SSID {}; choose another name",
                                    inQuotes(block.path), inQuotes(name), item.ssid));
}

std::uint32_t freshSsid(const Session& session, const Block& block) {
    FreshNumbers numbers(std::numeric_limits<std::uint32_t>::max());
    for (const ChartItem& item : chartItemsOf(block)) numbers.note(std::uint64_t{item.ssid});
    for (const std::size_t i : marksOn(session, [&](const SignalSource& source) { return source.block == &block; }))
        numbers.note(std::uint64_t{ssidOf(*session.signals().get(i)).value_or(0)});
    return static_cast<std::uint32_t>(numbers.next());
}

std::uint32_t requireSsid(const Block& block, std::uint32_t ssid) {
    const std::optional<ChartItem> there = chartItemOf(block, ssid);
    if (ssid == 0 || there)
        throw Error(fmt::format("the chart {} has the SSID {} already, for {}; choose another", inQuotes(block.path),
                                ssid, ssid == 0 ? "itself" : inQuotes(there->subPath)));
    return ssid;
}

// The item itself and, of a state, those below it.
std::vector<ChartItem> subtreeOf(const Block& block, const ChartItem& item) {
    std::vector<ChartItem> items = chartItemsOf(block);
    std::erase_if(items, [&](const ChartItem& one) {
        const bool isBelow =
            item.domainType == kStateDomain && one.domainType == kStateDomain && isAtOrBelow(one.subPath, item.subPath);
        return one.ssid != item.ssid && !isBelow;
    });
    return items;
}

Positions marksOnItems(const Session& session, const Block& block, const std::vector<ChartItem>& items) {
    return marksOn(session, [&](const SignalSource& source) {
        return source.block == &block && source.item &&
               std::any_of(items.begin(), items.end(),
                           [&](const ChartItem& one) { return one.ssid == source.item->ssid; });
    });
}

}  // namespace

SignalSource itemCalled(const kestrel::Model& model, const std::string& reference, const ReferenceOptions& options) {
    std::vector<SignalSource> sources = resolveReference(model, reference, options);
    if (sources.size() != 1 || !sources.front().item)
        throw Error(fmt::format("{}: name a state or datum, as in \"chart/State\"", inQuotes(reference)));
    return std::move(sources.front());
}

std::uint32_t addItem(Session& session, const Block& block, ItemKind kind, const std::u16string& name,
                      std::optional<std::uint32_t> ssid) {
    const bool isState = kind == ItemKind::state;
    requireName(name);
    if (isState && !kestrel::isBlockPath(name))
        throw Error(fmt::format("{}: is not a state's path; give names with one '/' between them", inQuotes(name)));
    requireFree(block, isState ? kStateDomain : kDataDomain, name);
    const std::uint32_t number = ssid ? requireSsid(block, *ssid) : freshSsid(session, block);
    Chart chart = block.chart.value_or(Chart{});
    if (isState)
        chart.states.push_back({name, number});
    else
        chart.data.push_back({name, number});
    session.model().setChart(block.path, std::move(chart));
    return number;
}

RemovedItems removeItem(Session& session, const Block& block, const ChartItem& item, Below below, Marks marks) {
    requireItem(item);
    const std::vector<ChartItem> items = subtreeOf(block, item);
    if (below == Below::refuse && items.size() > 1)
        throw Error(fmt::format("{} has {} below it", inQuotes(item.subPath), counted(items.size() - 1, "state")),
                    ErrorCode::request, Remedy::removeBelow);
    const Positions signals = marksOnItems(session, block, items);
    settleMarks(session, signals, marks, inQuotes(item.subPath));
    Chart chart = *block.chart;
    RemovedItems removed{{}, signals.size()};
    for (const ChartItem& one : items) {
        removed.items.push_back(one.subPath);
        std::erase_if(chart.states, [&](const auto& state) { return state.ssid == one.ssid; });
        std::erase_if(chart.data, [&](const auto& datum) { return datum.ssid == one.ssid; });
    }
    session.model().setChart(block.path, std::move(chart));
    return removed;
}

RenamedItems renameItem(Session& session, const Block& block, const ChartItem& item, const std::u16string& name) {
    requireItem(item);
    const bool isState = item.domainType == kStateDomain;
    const std::u16string path = isState ? renamedPath(item.subPath, name) : name;
    requireName(name);
    if (path == item.subPath) return {};
    Chart chart = *block.chart;
    RenamedItems renamed;
    for (const ChartItem& one : subtreeOf(block, item)) {
        std::u16string followed = path + one.subPath.substr(item.subPath.size());
        requireFree(block, item.domainType, followed);
        for (auto& state : chart.states)
            if (state.ssid == one.ssid) state.path = followed;
        for (auto& datum : chart.data)
            if (datum.ssid == one.ssid) datum.name = followed;
        for (const std::size_t i : marksOnItems(session, block, {one})) {
            session.signals().get(i)->m_subPath = followed;
            ++renamed.signals;
        }
        renamed.items.emplace_back(one.subPath, std::move(followed));
    }
    session.model().setChart(block.path, std::move(chart));
    session.signals().updateObservedPortMap();
    return renamed;
}

}  // namespace workbench
