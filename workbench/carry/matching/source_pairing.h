#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "memory_host/kestrel/model.h"

/// Which port or chart item of a block is which in the block's next version.
namespace workbench {

enum class SourceHow : std::uint8_t {
    lost,   ///< it is gone
    same,   ///< the same name, wherever it stands
    rule,   ///< a chart's item that has another name and kept its identifier
    guess,  ///< a candidate, which a person has to look at
};

struct SourceMatch {
    SourceHow how = SourceHow::lost;
    int port = 0;  ///< 1-based; 0 for a chart item, and where a guess has no best candidate
    /// Of the port or item; valid as long as the pairing and its models.
    std::u16string_view name = {};
    std::uint32_t ssid = 0;      ///< of the item
    std::size_t candidates = 0;  ///< of a guess
};

/// The output ports of a block in two versions, which must stay as they are. Made in time that is linear in the ports,
/// asked in constant time.
class PortPairing {
public:
    PortPairing(const kestrel::Block& old, const kestrel::Block& next)
        : m_old(old), m_next(next), m_isSame(old.outputs == next.outputs) {}
    /// Of the port with that name; `number` (1-based) tells which, where several have it, and 0 that nobody knows.
    SourceMatch of(std::u16string_view name, int number);

private:
    using Index = std::unordered_map<std::u16string_view, std::vector<int>>;
    /// What is looked at where not all ports are as they were.
    struct Names {
        Names(const kestrel::Block& oldBlock, const kestrel::Block& newBlock);
        Index old, next;
        std::unordered_map<std::u16string, std::vector<int>> added;  ///< by plain name
        std::size_t lostCount = 0, addedCount = 0;
        int lastAdded = 0;
    };

    SourceMatch at(int number, SourceHow how, std::size_t candidates = 1) const;
    SourceMatch amongSeveral(const std::vector<int>& before, const std::vector<int>& after, int number) const;
    SourceMatch renamed(std::u16string_view name) const;

    const kestrel::Block& m_old;
    const kestrel::Block& m_next;
    bool m_isSame;  ///< all ports are as they were
    std::unique_ptr<const Names> m_names;
};

/// The items of a chart, by path or name and by identifier. The block must stay as it is.
struct ItemNames {
    /// A block may have no chart.
    explicit ItemNames(const kestrel::Block* block);

    struct Items {
        std::unordered_map<std::u16string_view, std::uint32_t> bySubPath;
        std::unordered_map<std::uint32_t, std::u16string_view> bySsid;
    };
    const Items& of(std::u16string_view domain) const { return domain == u"cw_state" ? states : data; }
    bool has(std::u16string_view name) const {
        return states.bySubPath.contains(name) || data.bySubPath.contains(name);
    }

    bool hasChart = false;
    Items states, data;
};

/// The items of a chart in two versions; the same costs.
class ItemPairing {
public:
    /// Either may have no chart.
    ItemPairing(const kestrel::Block* old, const kestrel::Block& next);
    /// Of the state or datum of that path or name; `ssid` is what it had, nothing when nobody knows.
    SourceMatch of(std::u16string_view domain, std::u16string_view path, std::optional<std::uint32_t> ssid) const;

private:
    ItemNames m_old, m_new;
};

}  // namespace workbench
