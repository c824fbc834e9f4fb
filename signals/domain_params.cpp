#include "signals/domain_params.h"

#include <algorithm>
#include <ranges>

namespace ks_hmi {

namespace {

using Map = SignalSpecification::DomainParamsMap;

constexpr std::size_t kMostBuckets = 1 << 16;

// A new entry goes in front of its bucket's others, and the first of a bucket in front of all. So what is entered from
// last to first is walked in order, unless it makes the buckets more meanwhile or a bucket's entries stood apart.
void enterBackwards(Map& map, const std::vector<DomainParam>& params) {
    for (const DomainParam& param : params | std::views::reverse) map.insert(param);
}

void enterAgain(Map& map, std::size_t buckets, const std::vector<DomainParam>& params) {
    map.clear();
    map.rehash(buckets);
    enterBackwards(map, params);
}

bool isWalkedInOrder(const Map& map, const std::vector<DomainParam>& params) {
    // Fewer entries than parameters: some had the same name, and there is no order to restore.
    return map.size() != params.size() || std::equal(map.begin(), map.end(), params.begin(),
                                                     [](const auto& a, const auto& b) { return a.first == b.first; });
}

}  // namespace

Map domainParamsInOrder(const std::vector<DomainParam>& params) {
    Map map;
    enterBackwards(map, params);
    // The buckets may have become more on the way; and the map that was walked may have had another number of them:
    // that of a map made at once, or of one that has shrunk. With many enough each name has its own, and any order is
    // kept.
    const std::size_t grown = map.bucket_count();
    if (!isWalkedInOrder(map, params)) enterAgain(map, grown, params);
    if (!isWalkedInOrder(map, params)) enterAgain(map, params.size(), params);
    for (std::size_t buckets = 2 * grown; !isWalkedInOrder(map, params) && buckets <= kMostBuckets; buckets *= 2)
        enterAgain(map, buckets, params);
    return map;
}

}  // namespace ks_hmi
