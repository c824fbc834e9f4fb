#include "workbench/session/signal_source.h"

#include <algorithm>
#include <charconv>
#include <iterator>

#include "memory_host/kestrel/signal_block.h"
#include "signals/signal_specification.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

ChartItem chartItself() { return {std::u16string(kChartDomain), u"", 0}; }
ChartItem itemOf(const kestrel::ChartData& datum) { return {std::u16string(kDataDomain), datum.name, datum.ssid}; }

}  // namespace

std::u16string fullName(const kestrel::Model& model, const SignalSource& source) {
    const std::u16string block = model.fullPath(*source.block);
    if (!source.item) return block + u":" + toUtf16(std::to_string(source.port));
    return source.item->subPath.empty() ? block : block + u"/" + source.item->subPath;
}

std::u16string parentPath(const std::u16string& path) {
    const std::size_t slash = path.rfind(u'/');
    return slash == std::u16string::npos ? std::u16string() : path.substr(0, slash);
}

bool isAtOrBelow(std::u16string_view path, std::u16string_view parent) {
    return path.starts_with(parent) && (path.size() == parent.size() || path[parent.size()] == u'/');
}

std::optional<std::u16string> followedSubSysPath(const std::u16string& subSysPath, const std::u16string& oldPath,
                                                 const std::u16string& newPath) {
    return subSysPath == parentPath(oldPath) ? std::optional(parentPath(newPath)) : std::nullopt;
}

std::u16string portName(const SignalSource& source) {
    const auto port = static_cast<std::size_t>(source.port);
    return port >= 1 && port <= source.block->outputs.size() ? source.block->outputs[port - 1] : std::u16string();
}

std::string textOf(const SignalFlags& flags) {
    std::string text;
    const auto add = [&](bool isSet, const char* name) {
        if (isSet) text += (text.empty() ? "" : ",") + std::string(name);
    };
    add(flags.isFrameBased, "frame-based");
    add(flags.isHidden, "hidden");
    add(flags.isBuffered, "buffered");
    add(flags.isExcludedFromSave, "not-saved");
    return text;
}

std::optional<ChartItem> chartItemOf(const kestrel::Block& block, std::uint32_t ssid) {
    if (!block.chart) return std::nullopt;
    if (ssid == 0) return chartItself();
    for (const kestrel::ChartState& state : block.chart->states)
        if (state.ssid == ssid) return itemOf(state);
    for (const kestrel::ChartData& datum : block.chart->data)
        if (datum.ssid == ssid) return itemOf(datum);
    return std::nullopt;
}

ChartItem itemOf(const kestrel::ChartState& state) { return {std::u16string(kStateDomain), state.path, state.ssid}; }

std::vector<ChartItem> chartItemsOf(const kestrel::Block& block) {
    if (!block.chart) return {};
    std::vector<ChartItem> items{chartItself()};
    for (const kestrel::ChartState& state : block.chart->states) items.push_back(itemOf(state));
    for (const kestrel::ChartData& datum : block.chart->data) items.push_back(itemOf(datum));
    return items;
}

bool isChartSignal(const ks_hmi::SignalSpecification& signal) {
    const std::u16string& domain = signal.m_domainType;
    return domain == kChartDomain || domain == kStateDomain || domain == kDataDomain;
}

const kestrel::Block* blockOf(const kestrel::Model& model, const ks_hmi::SignalSpecification& signal) {
    return kestrel::signalBlock(model, signal.m_eid, signal.m_blockPath);
}

SignalSource sourceOf(const kestrel::Model& model, const ks_hmi::SignalSpecification& signal) {
    SignalSource source{blockOf(model, signal), 0, std::nullopt};
    if (!isChartSignal(signal))
        source.port = signal.m_outputPortIndex;
    else
        source.item = ChartItem{signal.m_domainType, signal.m_subPath, ssidOf(signal).value_or(0)};
    return source;
}

std::optional<std::uint32_t> ssidOf(std::u16string_view text) {
    const std::string digits = toUtf8(text);
    std::uint32_t number = 0;
    const char* const end = digits.data() + digits.size();
    const auto [stop, code] = std::from_chars(digits.data(), end, number);
    // The library compares the texts, so only the plain digits name the item.
    if (code != std::errc() || stop != end || digits != std::to_string(number)) return std::nullopt;
    return number;
}

std::optional<std::uint32_t> ssidOf(const ks_hmi::SignalSpecification& signal) {
    return ssidOf(signal.getValueForDomainParams(u"SSID"));
}

std::u16string activityOf(const ks_hmi::SignalSpecification& signal) {
    return signal.getValueForDomainParams(u"Activity");
}

bool hasActivity(const ChartItem& item, std::u16string_view activity) {
    const bool isKnown = std::find(std::begin(kActivities), std::end(kActivities), activity) != std::end(kActivities);
    return isKnown && (activity == u"Data") == (item.domainType == kDataDomain);
}

std::string activityList(const ChartItem& item) {
    std::vector<std::string> activities;
    for (const char16_t* const activity : kActivities)
        if (hasActivity(item, activity)) activities.push_back(toUtf8(activity));
    return listed(activities);
}

std::u16string defaultActivity(const ChartItem& item) { return item.domainType == kDataDomain ? u"Data" : u"Self"; }

}  // namespace workbench
