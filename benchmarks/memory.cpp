#include <fmt/format.h>

#include <map>
#include <unordered_map>
#include <utility>

#include "benchmarks/allocations.h"
#include "benchmarks/persistence.h"
#include "benchmarks/sample_signals.h"
#include "benchmarks/suite.h"

// What a set takes of the heap, beside what its records and their texts are in size.
namespace ks_bench {

namespace {

// A record as one writes it down: a string for each text, the map, the numbers.
struct PlainRecord {
    std::string uuid, eid, bindingRule;
    std::u16string blockPath, subPath, signalName, subSysPath, domainType, visualType;
    std::unordered_map<std::u16string, std::u16string> domainParams;
    std::int32_t outputPort, logicalPort, decimation, maxPoints, cachedPort;
    bool isBuffered, isFrameBased, isHidden, isExcluded;
    double cachedHandle;
};

// Bytes of a text that does not fit into its string.
template <class Unit>
std::size_t outside(const std::basic_string<Unit>& text) {
    return text.size() > std::basic_string<Unit>().capacity() ? text.size() * sizeof(Unit) : 0;
}

std::size_t textsOutside(const ks_hmi::SignalSpecification& signal) {
    return outside(signal.m_uuid) + outside(signal.m_eid) + outside(signal.m_blockPath) +
           outside(signal.m_subPath.get()) + outside(signal.m_signalName) + outside(signal.m_subSysPath) +
           outside(signal.m_domainType.get()) + outside(signal.m_visualType.get());
}

// Bytes a signal.
struct Footprint {
    double held;
    double texts;
    double plain() const noexcept { return texts + sizeof(PlainRecord); }
    double own() const noexcept { return texts + sizeof(ks_hmi::SignalSpecification); }
};

// A set as it is after loading, and after an engine has asked for every port.
Footprint measured(std::size_t count, bool isResolved) {
    const HvArrayPtr saved = savedRecords(count);
    const AllocationCount counting;
    ks_hmi::InstrumentedSignals set;
    set.setModelName(kModelName);
    set.setFromPersistenceData(saved.get());
    std::size_t bytes = 0;
    for (std::size_t i = 0; i < count; ++i) {
        bytes += textsOutside(*set.get(i));
        if (isResolved) set.isPortObserved(blockHandle(i), blockPath(i), u"", 1, 1, 0);
    }
    const auto signals = static_cast<double>(count);
    return {static_cast<double>(counting.heldBytes()) / signals, static_cast<double>(bytes) / signals};
}

const Footprint& footprint(std::size_t count, bool isResolved) {
    static std::map<std::pair<std::size_t, bool>, Footprint> s_footprints;
    const auto [found, isNew] = s_footprints.try_emplace({count, isResolved});
    if (isNew) found->second = measured(count, isResolved);
    return found->second;
}

void add(Suite& suite, const std::string& what, std::size_t count, bool isResolved) {
    const std::string name = "heap per signal, " + what + ", of " + std::to_string(count);
    const auto compare = [&](const char* baseline, double (Footprint::*bytes)() const noexcept, Limit limit) {
        suite.row(7, name + ", " + baseline, limit, [=] {
            const Footprint& print = footprint(count, isResolved);
            return Suite::Line{fmt::format("{:.1f} B / {:.1f} B", print.held, (print.*bytes)()),
                               print.held / (print.*bytes)(), "x"};
        });
    };
    compare("plain record and texts", &Footprint::plain, Limit::atMost(1.35));
    compare("own record and texts", &Footprint::own, Limit{});
}

}  // namespace

void addMemory(Suite& suite) {
    constexpr std::size_t kCount = 100'000;
    add(suite, "resolved", kCount, true);
    add(suite, "unresolved", kCount, false);
    // Just after the tables have doubled.
    add(suite, "resolved", std::size_t{1} << 17U, true);
}

}  // namespace ks_bench
