#pragma once

#include <cstddef>

#include "host/values.h"
#include "observers/streaming_clients.h"
#include "signals/instrumented_signals.h"

/// The records of a set, in its order, for `for`. The set must not lose any meanwhile.
namespace workbench {

inline auto recordsOf(const ks_hmi::InstrumentedSignals& set) {
    return ks_host::Elements(set.getCount(),
                             [&set](std::size_t i) -> const ks_hmi::SignalSpecification& { return *set.get(i); });
}
inline auto recordsOf(ks_hmi::InstrumentedSignals& set) {
    return ks_host::Elements(set.getCount(),
                             [&set](std::size_t i) -> ks_hmi::SignalSpecification& { return *set.get(i); });
}
inline auto recordsOf(const ks_hmi::StreamingClients& set) {
    return ks_host::Elements(set.getCount(),
                             [&set](std::size_t i) -> const ks_hmi::SignalClient& { return *set.get(i); });
}
inline auto recordsOf(ks_hmi::StreamingClients& set) {
    return ks_host::Elements(set.getCount(), [&set](std::size_t i) -> ks_hmi::SignalClient& { return *set.get(i); });
}

}  // namespace workbench
