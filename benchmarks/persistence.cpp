#include "benchmarks/persistence.h"

#include "benchmarks/sample_signals.h"
#include "benchmarks/suite.h"
#include "memory_host/kestrel/loaded_models.h"

// Saved records: made from a set, and read into one.
namespace ks_bench {

OpenModel::OpenModel(std::size_t blocks) { kestrel::loadedModels().load(makeModel(blocks)); }
OpenModel::~OpenModel() { kestrel::loadedModels().unload(kModelName); }

HvArrayPtr savedRecords(std::size_t count) {
    const OpenModel model(count);
    return makeSet(count, unresolvedSignal)->getPersistenceData();
}

namespace {

constexpr std::size_t kCount = 100'000;

void cloneAll(benchmark::State& state) {
    const auto& set = sharedSet(kCount, unresolvedSignal);
    for ([[maybe_unused]] auto _ : state) {
        std::vector<SignalPtr> clones;
        for (std::size_t i = 0; i < kCount; ++i) clones.emplace_back(set.get(i)->clone());
        state.PauseTiming();
        clones.clear();
        state.ResumeTiming();
    }
}

void load(benchmark::State& state) {
    static const HvArrayPtr s_saved = savedRecords(kCount);
    for ([[maybe_unused]] auto _ : state) {
        auto set = std::make_unique<ks_hmi::InstrumentedSignals>();
        set->setModelName(kModelName);
        set->setFromPersistenceData(s_saved.get());
        state.PauseTiming();
        set.reset();
        state.ResumeTiming();
    }
}

void save(benchmark::State& state) {
    const OpenModel model(kCount);
    const auto& set = sharedSet(kCount, unresolvedSignal);
    for ([[maybe_unused]] auto _ : state) {
        HvArrayPtr saved = set.getPersistenceData();
        state.PauseTiming();
        if (hvIsEmpty(hvGetField(saved.get(), kCount - 1, "BlockPath_"))) state.SkipWithError("nothing was aligned");
        saved.reset();
        state.ResumeTiming();
    }
}

}  // namespace

void addPersistence(Suite& suite) {
    Suite::time("records: clone", cloneAll)->Unit(benchmark::kMillisecond);
    Suite::time("records: load", load)->Unit(benchmark::kMillisecond);
    Suite::time("records: save", save)->Unit(benchmark::kMillisecond);
    suite.compare(5, "setFromPersistenceData of 100000, cloning them", "records: load", "records: clone",
                  Limit::atMost(8));
    suite.compare(5, "getPersistenceData of 100000 with alignment, cloning them", "records: save", "records: clone",
                  Limit::atMost(40));
}

}  // namespace ks_bench
