#include <map>

#include "benchmarks/allocations.h"
#include "benchmarks/asking.h"
#include "benchmarks/bare_tables.h"
#include "benchmarks/sample_signals.h"
#include "benchmarks/suite.h"

// "Is this activity of this chart object observed?", and "is any?".
namespace ks_bench {

namespace {

constexpr double kSsid = 7.0;
const std::u16string kActivity = u"Self";
constexpr std::size_t kCharts = 10'000;

// With the model's name in front, as an engine knows them.
const std::vector<std::u16string>& identifiers() {
    static std::vector<std::u16string> s_list;
    if (s_list.empty()) {
        for (const std::size_t chart : randomBlocks(kCharts)) {
            const std::string number = std::to_string(chart);
            s_list.push_back(kModelName + std::u16string(u":") + std::u16string(number.begin(), number.end()));
        }
    }
    return s_list;
}

ks_hmi::InstrumentedSignals& charts() { return sharedSet(kCharts, chartSignal); }

const bare::Table<bare::ChartKey>& bareTable(const std::u16string& activity) {
    static std::map<std::u16string, bare::Table<bare::ChartKey>> s_tables;
    auto& table = s_tables[activity];
    if (!table.empty()) return table;
    static std::vector<std::u16string> s_keys;
    if (s_keys.empty())
        for (std::size_t i = 0; i < kCharts; ++i) {
            const std::string number = std::to_string(i);
            s_keys.push_back(kModelName + std::u16string(u":") + std::u16string(number.begin(), number.end()));
        }
    for (std::size_t i = 0; i < kCharts; ++i)
        table.emplace(bare::ChartKey{s_keys[i], std::bit_cast<std::uint64_t>(kSsid), activity}, charts().get(i));
    return table;
}

bool isActivityObserved(const std::u16string& eid) { return charts().isCWActivityObserved(eid, kSsid, kActivity); }
bool isAnyObserved(const std::u16string& eid) { return charts().isAnyCWActivityObserved(eid, kSsid); }

template <class Ask>
void askAll(benchmark::State& state, Ask ask) {
    const std::vector<std::u16string>& list = identifiers();
    for (const std::u16string& eid : list)
        if (ask(eid) != isActivityObserved(eid)) return state.SkipWithError("the answers differ");
    askInTurn</*kOneByOne=*/false>(state, list, ask);
}

std::size_t allocationsOfAllQuestions() {
    // An unknown object gets its entry at the first question, which is allowed to allocate.
    for (const std::u16string& eid : identifiers()) isAnyObserved(eid);
    auto& handles = sharedSet(kCharts, resolvedSignal);
    const std::u16string path = blockPath(1);
    const AllocationCount count;
    for (const std::u16string& eid : identifiers()) {
        benchmark::DoNotOptimize(isActivityObserved(eid) || isAnyObserved(eid));
        benchmark::DoNotOptimize(handles.isPortObserved(blockHandle(1), 1) || handles.isPortObserved(0.25, 1) ||
                                 handles.isPortObserved(0.25, path, u"", 1, 0, 0) || handles.isKSPortObserved(nullptr));
    }
    return count.allocations();
}

}  // namespace

void addChartQueries(Suite& suite) {
    Suite::time("chart: activity", [](benchmark::State& state) {
        const auto& set = charts();
        askAll(state, [&](const std::u16string& eid) { return set.isCWActivityObserved(eid, kSsid, kActivity); });
    });
    Suite::time("chart: any activity", [](benchmark::State& state) {
        auto& set = charts();
        askAll(state, [&](const std::u16string& eid) { return set.isAnyCWActivityObserved(eid, kSsid); });
    });
    const auto addBare = [](const char* name, const std::u16string& activity) {
        Suite::time(name, [activity](benchmark::State& state) {
            const auto& table = bareTable(activity);
            askAll(state, [&](const std::u16string& eid) {
                return table.contains(bare::ChartKey{eid, std::bit_cast<std::uint64_t>(kSsid), activity});
            });
        });
    };
    addBare("chart: bare table", kActivity);
    addBare("chart: bare table of objects", u"");
    suite.compare(3, "chart activity, bare table, throughput, 10000 charts", "chart: activity", "chart: bare table",
                  Limit::atMost(2));
    suite.compare(3, "any chart activity, bare table, throughput, 10000 charts", "chart: any activity",
                  "chart: bare table of objects", Limit::atMost(2));
    suite.figure(
        3, "allocations of all kinds of questions", "", [] { return static_cast<double>(allocationsOfAllQuestions()); },
        Limit::atMost(0));
}

}  // namespace ks_bench
