#include "benchmarks/allocations.h"
#include "benchmarks/sample_signals.h"
#include "benchmarks/suite.h"

// What a set takes of the heap, beside what its records and their texts are in size.
namespace ks_bench {

namespace {

// Bytes of a text that does not fit into the record itself.
template <class Text>
std::size_t outside(const Text& text) {
    return text.capacity() > Text().capacity() ? text.size() * sizeof(typename Text::value_type) : 0;
}

std::size_t payload(const ks_hmi::SignalSpecification& signal) {
    return sizeof signal + outside(signal.m_uuid) + outside(signal.m_eid) + outside(signal.m_blockPath) +
           outside(signal.m_subPath) + outside(signal.m_signalName) + outside(signal.m_subSysPath) +
           outside(signal.m_domainType) + outside(signal.m_visualType);
}

struct Footprint {
    double held;
    double payload;
};

Footprint footprint(std::size_t count, MakeSignal make) {
    const AllocationCount counting;
    const auto set = makeSet(count, make);
    std::size_t bytes = 0;
    for (std::size_t i = 0; i < count; ++i) bytes += payload(*set->get(i));
    const auto signals = static_cast<double>(count);
    return {static_cast<double>(counting.heldBytes()) / signals, static_cast<double>(bytes) / signals};
}

}  // namespace

void addMemory(Suite& suite) {
    constexpr std::size_t kCount = 100'000;
    suite.figure(
        7, "sizeof and texts, per signal", "bytes", [] { return footprint(1000, resolvedSignal).payload; }, Limit{});
    const auto add = [&](const char* what, std::size_t count, MakeSignal make) {
        suite.figure(
            7, std::string(what) + " of " + std::to_string(count), "bytes", [=] { return footprint(count, make).held; },
            Limit{});
        suite.figure(
            7, std::string(what) + " of " + std::to_string(count) + ", sizeof and texts", "x",
            [=] {
                const Footprint print = footprint(count, make);
                return print.held / print.payload;
            },
            Limit::atMost(1.6));
    };
    add("heap per signal, resolved,", kCount, resolvedSignal);
    add("heap per signal, unresolved,", kCount, unresolvedSignal);
    // Just after the tables have doubled.
    add("heap per signal, resolved,", 1U << 17U, resolvedSignal);
}

}  // namespace ks_bench
