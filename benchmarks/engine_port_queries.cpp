#include <boost/unordered/unordered_flat_set.hpp>
#include <map>
#include <random>

#include "benchmarks/asking.h"
#include "benchmarks/sample_signals.h"
#include "benchmarks/suite.h"

// "Is this engine port observed?", by the port's address.
namespace ks_bench {

namespace {

constexpr std::uintptr_t kPortSize = 128;

ksPort* port(std::size_t number) { return reinterpret_cast<ksPort*>((number + 1) * kPortSize); }

struct Ports {
    ks_hmi::InstrumentedSignals set;
    boost::unordered_flat_set<std::uint64_t> bare;
    std::vector<ksPort*> questions;

    explicit Ports(std::size_t count) {
        std::vector<ksPort*> observed;
        for (std::size_t i = 0; i < count; ++i) observed.push_back(port(i));
        set.cacheKSPorts(observed);
        bare.reserve(count);
        for (const ksPort* const one : observed) bare.insert(reinterpret_cast<std::uintptr_t>(one));
        for (const std::size_t number : randomBlocks(count)) questions.push_back(port(number));
    }
};

const Ports& ports(std::size_t count) {
    static std::map<std::size_t, Ports> s_ports;
    return s_ports.try_emplace(count, count).first->second;
}

template <bool kOneByOne, class Ask>
void askAll(benchmark::State& state, const Ports& ports, Ask ask) {
    askInTurn<kOneByOne>(state, ports.questions, ask);
}

template <bool kOneByOne>
void addForms(Suite& suite, std::size_t count, const char* mode, Limit limit) {
    const std::string suffix = ", " + std::to_string(count) + mode;
    Suite::time("engine port: set" + suffix, [count](benchmark::State& state) {
        const Ports& asked = ports(count);
        askAll<kOneByOne>(state, asked, [&](const ksPort* one) { return asked.set.isKSPortObserved(one); });
    });
    Suite::time("engine port: bare set" + suffix, [count](benchmark::State& state) {
        const Ports& asked = ports(count);
        askAll<kOneByOne>(state, asked, [&](const ksPort* one) {
            return asked.bare.contains(reinterpret_cast<std::uintptr_t>(one));
        });
    });
    suite.compare(3, withSize("engine port, bare flat set", count) + mode, "engine port: set" + suffix,
                  "engine port: bare set" + suffix, limit);
}

}  // namespace

void addEnginePortQueries(Suite& suite) {
    for (const std::size_t count : kSizes) {
        addForms<false>(suite, count, ", throughput", Limit::atMost(1.2));
        addForms<true>(suite, count, ", one by one", Limit{});
    }
}

}  // namespace ks_bench
