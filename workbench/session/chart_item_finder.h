#pragma once

#include <cstdint>
#include <unordered_map>

#include "workbench/session/signal_source.h"

namespace workbench {

/// Finds chart items by SSID, for many questions: a chart is walked once. It does not outlive the blocks, which must
/// not change meanwhile.
class ChartItemFinder {
public:
    /// Null when the block has no such item. Valid while the finder lives.
    const ChartItem* find(const kestrel::Block& block, std::uint32_t ssid);

private:
    using Items = std::unordered_map<std::uint32_t, ChartItem>;
    std::unordered_map<const kestrel::Block*, Items> m_charts;
};

}  // namespace workbench
