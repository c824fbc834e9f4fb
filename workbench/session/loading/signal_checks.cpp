#include "workbench/session/loading/signal_checks.h"

#include <fmt/format.h>

#include <boost/unordered/unordered_flat_set.hpp>
#include <optional>
#include <string_view>
#include <utility>

#include "signals/signal_specification.h"
#include "workbench/session/chart_item_finder.h"
#include "workbench/session/records.h"
#include "workbench/session/signal_source.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

using ks_hmi::SignalSpecification;

SignalFault dangling(Misfit misfit, const char* field, std::string text) {
    return {0, field, std::move(text), true, misfit};
}
SignalFault wrong(Misfit misfit, const char* field, std::string text) {
    return {0, field, std::move(text), false, misfit};
}

std::optional<SignalFault> portFault(const SignalSpecification& signal, const kestrel::Block& block) {
    if (!signal.m_subPath.empty())
        return wrong(Misfit::kind, "SubPath_",
                     fmt::format("the sub-path {} is for chart items, and this is a port", inQuotes(signal.m_subPath)));
    const auto port = static_cast<std::size_t>(signal.m_outputPortIndex);
    if (signal.m_outputPortIndex >= 1 && port <= block.outputs.size()) return std::nullopt;
    return dangling(Misfit::portGone, "OutputPortIndex_",
                    fmt::format("the block {} has no output port {} (it has {})", inQuotes(block.path),
                                signal.m_outputPortIndex, counted(block.outputs.size(), "port")));
}

std::optional<SignalFault> chartFault(const SignalSpecification& signal, const kestrel::Block& block,
                                      ChartItemFinder& items) {
    if (!block.chart)
        return dangling(Misfit::itemGone, "DomainType_",
                        fmt::format("the block {} is not a chart", inQuotes(block.path)));
    const std::optional<std::uint32_t> ssid = ssidOf(signal);
    if (!ssid) return wrong(Misfit::ssid, "DomainParams_", "\"SSID\" is not a plain whole number");
    const ChartItem* const item = items.find(block, *ssid);
    if (!item || item->domainType != signal.m_domainType)
        return dangling(Misfit::itemGone, "DomainParams_",
                        fmt::format("the chart {} has no item with the SSID {} for the domain {}", inQuotes(block.path),
                                    toUtf8(signal.getValueForDomainParams(u"SSID")), inQuotes(signal.m_domainType)));
    const std::u16string activity = signal.getValueForDomainParams(u"Activity");
    if (hasActivity(*item, activity)) return std::nullopt;
    return wrong(Misfit::activity, "DomainParams_",
                 fmt::format("the activity {} is not one of the item's: {}", inQuotes(activity), activityList(*item)));
}

}  // namespace

std::optional<SignalFault> sourceFault(const SignalSpecification& signal, const kestrel::Model& model,
                                       ChartItemFinder& items) {
    if (!signal.m_domainType.empty() && !isChartSignal(signal))
        return wrong(
            Misfit::kind, "DomainType_",
            fmt::format("the domain {} is not one of cw_chart, cw_state and cw_data; for a port, leave it empty",
                        inQuotes(signal.m_domainType)));
    const kestrel::Block* const block = blockOf(model, signal);
    if (block) return isChartSignal(signal) ? chartFault(signal, *block, items) : portFault(signal, *block);
    const std::string path = fmt::format("(path {})", inQuotes(signal.m_blockPath));
    if (signal.m_eid.empty()) return dangling(Misfit::blockGone, "BlockPath_", "the model has no such block " + path);
    return dangling(
        Misfit::blockGone, "EID_",
        fmt::format("the model has no block with the element identifier {} {}", inQuotes(signal.m_eid), path));
}

std::vector<SignalFault> faultsOf(const ks_hmi::InstrumentedSignals& set, const kestrel::Model& model) {
    std::vector<SignalFault> faults;
    ChartItemFinder items;
    boost::unordered_flat_set<std::string_view> uuids;
    uuids.reserve(set.getCount());
    for (const auto& [position, signal] : numbered(set)) {
        std::optional<SignalFault> fault = sourceFault(signal, model, items);
        if (!uuids.insert(signal.m_uuid).second)
            fault = wrong(Misfit::uuidTaken, "UUID", "another signal has the UUID " + inQuotes(signal.m_uuid));
        if (signal.m_uuid.empty()) fault = wrong(Misfit::uuidMissing, "UUID", "the signal has no UUID");
        if (!fault) continue;
        fault->position = position;
        faults.push_back(std::move(*fault));
    }
    return faults;
}

}  // namespace workbench
