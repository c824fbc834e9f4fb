#pragma once

#include <cstddef>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "workbench/compare/saved_records.h"

namespace workbench {

/// Whether a block has the chart item, under the same number, that a signal is on in another.
bool hasItemOf(const kestrel::Block& block, const kestrel::Block& meant, std::u16string_view ssid);

/// The ports and chart items of blocks that signals are on. It refers to the blocks.
class UsedSources {
public:
    void note(const kestrel::Block& block, const RecordPlace& signal);
    /// Whether each port of the block that is used is among these once, or at its number.
    bool arePortsIn(const kestrel::Block& block, const std::vector<std::u16string>& outputs) const;
    bool areItemsIn(const kestrel::Block& block, const kestrel::Block& merged) const;

private:
    struct Used {
        std::set<std::size_t> ports = {};  // 1-based
        std::set<std::u16string> items = {};
    };
    std::unordered_map<const kestrel::Block*, Used> m_used;
};

}  // namespace workbench
