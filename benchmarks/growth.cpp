#include <map>

#include "benchmarks/persistence.h"
#include "benchmarks/sample_signals.h"
#include "benchmarks/suite.h"

// How the time of a whole pass over a set grows with its signals.
namespace ks_bench {

namespace {

using ks_hmi::InstrumentedSignals;
using Set = std::unique_ptr<InstrumentedSignals>;

constexpr std::size_t kGrowing[] = {1'000, 10'000, 100'000, 1'000'000};
constexpr int kRepetitions = 3;
// A pass takes longer the slower the caches; quadratic time would be 2.
const Limit kLinear = Limit::atMost(1.4);

std::vector<SignalPtr> makeSignals(std::size_t count, MakeSignal make) {
    std::vector<SignalPtr> signals;
    for (std::size_t i = 0; i < count; ++i) signals.push_back(make(i));
    return signals;
}

// A row for passes of several sizes. `pass` is given the number of signals and pauses for what is not to count.
void addPass(Suite& suite, const std::string& name, std::initializer_list<std::size_t> sizes,
             void (*pass)(benchmark::State& state, std::size_t count)) {
    std::map<std::size_t, std::string> names;
    for (const std::size_t count : sizes) {
        const std::string benchmarkName = "growth: " + name + ", " + std::to_string(count);
        Suite::time(benchmarkName, [=](benchmark::State& state) { pass(state, count); })
            ->Unit(benchmark::kMillisecond)
            ->Repetitions(kRepetitions);
        names[count] = benchmarkName;
    }
    suite.growth(6, name + ", per signal", names, kLinear);
}

void addAll(benchmark::State& state, std::size_t count) {
    const std::vector<SignalPtr> signals = makeSignals(count, resolvedSignal);
    for ([[maybe_unused]] auto _ : state) {
        InstrumentedSignals set;
        for (const SignalPtr& signal : signals) set.add(signal);
    }
}

void insertAtEnd(benchmark::State& state, std::size_t count) {
    const std::vector<SignalPtr> signals = makeSignals(count, unresolvedSignal);
    for ([[maybe_unused]] auto _ : state) {
        InstrumentedSignals set;
        for (const SignalPtr& signal : signals) set.insert(set.getCount(), signal);
    }
}

void query(benchmark::State& state, std::size_t count) {
    const auto& set = sharedSet(count, resolvedSignal);
    const std::vector<std::size_t> blocks = randomBlocks(count);
    std::size_t hits = 0;
    std::size_t at = 0;
    // Each pass goes on where the last one ended: processors learn a thousand questions by heart.
    for ([[maybe_unused]] auto _ : state)
        for (std::size_t i = 0; i < count; ++i, at = (at + 1) & (blocks.size() - 1))
            hits += static_cast<std::size_t>(set.isPortObserved(blockHandle(blocks[at]), 1));
    benchmark::DoNotOptimize(hits);
}

void loadAgainAndAgain(benchmark::State& state, const HvArrayPtr& saved) {
    for ([[maybe_unused]] auto _ : state) {
        auto set = std::make_unique<InstrumentedSignals>();
        set->setFromPersistenceData(saved.get());
        state.PauseTiming();
        set.reset();
        state.ResumeTiming();
    }
}

void load(benchmark::State& state, std::size_t count) { loadAgainAndAgain(state, savedRecords(count)); }

void save(benchmark::State& state, std::size_t count) {
    const OpenModel model(count);
    const auto& set = sharedSet(count, resolvedSignal);
    for ([[maybe_unused]] auto _ : state) {
        HvArrayPtr saved = set.getPersistenceData();
        state.PauseTiming();
        saved.reset();
        state.ResumeTiming();
    }
}

// One block with that many signals, its first port numbered anew: every signal follows.
void renumber(benchmark::State& state, std::size_t count) {
    const Set set = makeSet(count, unresolvedSignal);
    const std::u16string path = u"the only block";
    for (std::size_t i = 0; i < count; ++i) {
        set->get(i)->m_blockPath = path;
        set->get(i)->m_outputPortIndex = static_cast<std::int32_t>(i) + 1;
    }
    set->updateObservedPortMap();
    std::vector<int> reversed(count);
    for (std::size_t i = 0; i < count; ++i) reversed[i] = static_cast<int>(count - i);
    for ([[maybe_unused]] auto _ : state) set->renumberPorts(-1.0, path, "no identifier", reversed);
}

void update(benchmark::State& state, std::size_t count) {
    auto& set = sharedSet(count, resolvedSignal);
    for ([[maybe_unused]] auto _ : state) set.updateObservedPortMap();
}

void removeFromTheEnd(benchmark::State& state, std::size_t count) {
    for ([[maybe_unused]] auto _ : state) {
        state.PauseTiming();
        const Set set = makeSet(count, resolvedSignal);
        state.ResumeTiming();
        while (set->getCount() > 0) set->remove(set->getCount() - 1);
    }
}

SignalPtr signalOnOnePort(std::size_t) { return resolvedSignal(0); }

void loadOnOnePort(benchmark::State& state, std::size_t count) {
    const HvArrayPtr saved = [&] {
        const OpenModel model(1);
        return makeSet(count, signalOnOnePort)->getPersistenceData();
    }();
    loadAgainAndAgain(state, saved);
}

void removeFromOnePort(benchmark::State& state, std::size_t count) {
    for ([[maybe_unused]] auto _ : state) {
        state.PauseTiming();
        const Set set = makeSet(count, signalOnOnePort);
        state.ResumeTiming();
        while (set->getCount() > 0) set->remove(set->getCount() - 1);
    }
}

}  // namespace

void addGrowth(Suite& suite) {
    const auto addGrowing = [&](const char* name, void (*pass)(benchmark::State&, std::size_t)) {
        addPass(suite, name, {kGrowing[0], kGrowing[1], kGrowing[2], kGrowing[3]}, pass);
    };
    addGrowing("add", addAll);
    addGrowing("insert at the end", insertAtEnd);
    addGrowing("query by handle", query);
    addGrowing("setFromPersistenceData", load);
    addGrowing("getPersistenceData", save);
    addGrowing("renumberPorts of one block with all signals", renumber);
    addGrowing("updateObservedPortMap", update);
}

void addRemovals(Suite& suite) {
    addPass(suite, "remove from the last to the first", {1'000, 10'000, 100'000}, removeFromTheEnd);
    addPass(suite, "load with every signal on one port", {1'000, 10'000, 100'000}, loadOnOnePort);
    addPass(suite, "remove from one port, last to first", {1'000, 10'000, 100'000}, removeFromOnePort);
}

}  // namespace ks_bench
