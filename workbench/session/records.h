#pragma once

#include <cstddef>
#include <type_traits>
#include <utility>
#include <vector>

#include "host/values.h"
#include "observers/streaming_clients.h"
#include "signals/instrumented_signals.h"

/// The records of a set, in its order, for `for`. The set must not lose any meanwhile.
namespace workbench {

/// A record and where it stands in its set, 0-based.
template <class Record>
struct Numbered {
    std::size_t position;
    Record& record;
};

/// The kind of record of a set; const for a const set.
template <class Set, class Record = std::remove_reference_t<decltype(*std::declval<Set&>().get(0))>>
using RecordIn = std::conditional_t<std::is_const_v<Set>, const Record, Record>;

template <class Set>
auto recordsOf(Set& set) {
    return ks_host::Elements(set.getCount(), [&set](std::size_t i) -> RecordIn<Set>& { return *set.get(i); });
}

/// The same with their positions.
template <class Set>
auto numbered(Set& set) {
    return ks_host::Elements(set.getCount(), [&set](std::size_t i) { return Numbered<RecordIn<Set>>{i, *set.get(i)}; });
}

/// The positions of the records of which `isMeant` holds, ascending.
template <class Set, class Predicate>
std::vector<std::size_t> positionsWhere(const Set& set, Predicate&& isMeant) {
    std::vector<std::size_t> positions;
    for (const auto& [position, record] : numbered(set))
        if (isMeant(record)) positions.push_back(position);
    return positions;
}

/// Whether a file has the same of both.
bool isSavedAlike(const ks_hmi::SignalSpecification& one, const ks_hmi::SignalSpecification& other);
bool isSavedAlike(const ks_hmi::SignalClient& one, const ks_hmi::SignalClient& other);

}  // namespace workbench
