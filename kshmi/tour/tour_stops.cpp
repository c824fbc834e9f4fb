#include "kshmi/tour/tour.h"
#include "workbench/text/text.h"

namespace kshmi {

using namespace workbench;

std::vector<Tour::Stop> Tour::unmarkedPorts(std::size_t most) const {
    std::vector<Stop> stops;
    for (const kestrel::Block& block : m_session->model().blocks())
        for (int port = 1; port <= static_cast<int>(block.outputs.size()); ++port) {
            if (stops.size() == most) return stops;
            if (!m_session->isObserved(block, port)) stops.push_back({.eid = block.eid, .port = port});
        }
    return stops;
}

std::vector<Tour::Stop> Tour::unmarkedItems(std::size_t most) const {
    std::vector<Stop> stops;
    for (const kestrel::Block& block : m_session->model().blocks()) {
        if (!block.chart) continue;
        for (const kestrel::ChartState& state : block.chart->states) {
            if (stops.size() == most) return stops;
            const ChartItem item = itemOf(state);
            if (!m_session->isAnyObserved(block, item))
                stops.push_back({.eid = block.eid, .ssid = state.ssid, .activity = defaultActivity(item)});
        }
    }
    return stops;
}

SignalSource Tour::find(const Stop& stop) const {
    const kestrel::Block* const block = m_session->model().findByEid(stop.eid);
    if (stop.port > 0) return {block, stop.port, std::nullopt};
    return {block, 0, chartItemOf(*block, stop.ssid)};
}

std::string Tour::nameOf(const Stop& stop) const {
    const SignalSource source = find(stop);
    const std::u16string detail = source.item ? stop.activity : portName(source);
    return fmt::format("{} ({})", printable(fullName(m_session->model(), source)), printable(detail));
}

std::string Tour::firstHandle() const {
    const auto& blocks = m_session->model().blocks();
    if (blocks.empty()) return {};
    return fmt::format("{} has {:.6f}", printable(blocks.front().path), blocks.front().handle);
}

}  // namespace kshmi
