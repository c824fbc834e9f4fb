#include "workbench/session/chart_item_finder.h"

namespace workbench {

const ChartItem* ChartItemFinder::find(const kestrel::Block& block, std::uint32_t ssid) {
    if (!block.chart) return nullptr;
    const auto [chart, isNew] = m_charts.try_emplace(&block);
    if (isNew)
        for (ChartItem& item : chartItemsOf(block)) chart->second.try_emplace(item.ssid, item);
    const auto found = chart->second.find(ssid);
    return found == chart->second.end() ? nullptr : &found->second;
}

}  // namespace workbench
