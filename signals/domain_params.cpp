#include "signals/domain_params.h"

#include <algorithm>
#include <iterator>

namespace ks_hmi {

namespace {

using Map = SignalSpecification::DomainParamsMap;
// Entries in the order to be walked in; they stay where they are in memory, whichever map holds them.
using Order = std::vector<const Map::value_type*>;

constexpr std::size_t kMostBuckets = 1 << 16;

bool isWalkedIn(const Order& order, const Map& map) {
    return std::equal(map.begin(), map.end(), order.begin(), order.end(),
                      [](const Map::value_type& entry, const Map::value_type* due) { return &entry == due; });
}

void enterAgain(Map& map, std::size_t buckets, const Order& order) {
    Map again;
    again.rehash(buckets);
    for (auto entry = order.rbegin(); entry != order.rend(); ++entry) again.insert(map.extract((*entry)->first));
    map.swap(again);
}

// With another number of buckets, until the walk is in order. The buckets may have become more while entries were
// entered; and the map that was walked may have had another number of them: that of a map made at once, or of one that
// has shrunk. With many enough each entry has its own, and any order is kept.
void restore(Map& map, const Order& order) {
    const std::size_t grown = map.bucket_count();
    enterAgain(map, grown, order);
    if (!isWalkedIn(order, map)) enterAgain(map, order.size(), order);
    for (std::size_t buckets = 2 * grown; !isWalkedIn(order, map) && buckets <= kMostBuckets; buckets *= 2)
        enterAgain(map, buckets, order);
}

}  // namespace

// A new entry goes in front of its bucket's others, and the first of a bucket in front of all. So what is entered from
// last to first is walked in order, unless it makes the buckets more meanwhile or a bucket's entries stood apart.
Map domainParamsInOrder(std::vector<DomainParam> params) {
    Map map;
    Order order;
    order.reserve(params.size());
    for (auto param = params.rbegin(); param != params.rend(); ++param) {
        const auto [entry, isNew] = map.emplace(std::move(param->first), std::move(param->second));
        if (isNew) order.push_back(&*entry);
    }
    std::reverse(order.begin(), order.end());
    if (!isWalkedIn(order, map)) restore(map, order);
    return map;
}

}  // namespace ks_hmi
