#include <map>

#include "benchmarks/asking.h"
#include "benchmarks/bare_tables.h"
#include "benchmarks/plain_form.h"
#include "benchmarks/sample_signals.h"
#include "benchmarks/suite.h"

// "Is this port of this block observed?", by the block's path. The engine's port number is 0, so that no question
// resolves a signal and every one of them takes the whole way: by handle first, then by path.
namespace ks_bench {

namespace {

const std::u16string kNoSubPath;

// Texts of their own, as an engine has them; not those of the records.
const std::vector<std::u16string>& paths(std::size_t count) {
    static std::map<std::size_t, std::vector<std::u16string>> s_paths;
    auto& list = s_paths[count];
    if (list.empty())
        for (const std::size_t block : randomBlocks(count)) list.push_back(blockPath(block));
    return list;
}

const bare::Table<bare::PathKey>& bareTable(std::size_t count) {
    static std::map<std::size_t, bare::Table<bare::PathKey>> s_tables;
    auto& table = s_tables[count];
    if (!table.empty()) return table;
    const auto& set = sharedSet(count, unresolvedSignal);
    for (std::size_t i = 0; i < count; ++i) {
        const ks_hmi::SignalSpecification* const signal = set.get(i);
        table.emplace(bare::PathKey{signal->m_blockPath, signal->m_subPath, signal->m_outputPortIndex}, signal);
    }
    return table;
}

const plain::Table& plainTable(std::size_t count) {
    static std::map<std::size_t, plain::Table> s_tables;
    auto& table = s_tables[count];
    if (!table.empty()) return table;
    const auto& set = sharedSet(count, unresolvedSignal);
    for (std::size_t i = 0; i < count; ++i) {
        const auto signal = set.share(i);
        table.emplace(plain::pathKey(signal->m_blockPath, signal->m_subPath, 1, 0, kModelName), signal);
    }
    return table;
}

bool isInSet(ks_hmi::InstrumentedSignals& set, const std::u16string& path) {
    constexpr double kUnknownHandle = 0.25;
    return set.isPortObserved(kUnknownHandle, path, kNoSubPath, 1, 0, 0);
}

template <bool kOneByOne, class Ask>
void askAll(benchmark::State& state, std::size_t count, Ask ask) {
    const std::vector<std::u16string>& list = paths(count);
    auto& set = sharedSet(count, unresolvedSignal);
    for (const std::u16string& path : list)
        if (ask(path) != isInSet(set, path)) return state.SkipWithError("the answers differ");
    askInTurn<kOneByOne>(state, list, ask);
}

template <bool kOneByOne>
void addForms(const std::string& suffix, std::size_t count) {
    const auto addSet = [&](const char* name, MakeSignal make) {
        Suite::time(name + suffix, [=](benchmark::State& state) {
            auto& set = sharedSet(count, make);
            askAll<kOneByOne>(state, count, [&](const std::u16string& path) { return isInSet(set, path); });
        });
    };
    addSet("path: unresolved set", unresolvedSignal);
    addSet("path: resolved set", resolvedSignal);
    Suite::time("path: bare table" + suffix, [=](benchmark::State& state) {
        const auto& table = bareTable(count);
        askAll<kOneByOne>(state, count, [&](const std::u16string& path) {
            return table.contains(bare::PathKey{path, kNoSubPath, 1});
        });
    });
}

void addPlainForm(Suite& suite, const std::string& suffix, std::size_t count) {
    Suite::time("path: plain form" + suffix, [=](benchmark::State& state) {
        const auto& table = plainTable(count);
        const std::u16string model = kModelName;
        askAll<false>(state, count, [&](const std::u16string& path) {
            return plain::isPortObserved(table, path, kNoSubPath, 1, model);
        });
    });
    suite.speedUp(2, withSize("path, plain form, throughput", count), "path: unresolved set" + suffix,
                  "path: plain form" + suffix, Limit{});
}

}  // namespace

void addPathQueries(Suite& suite) {
    for (const std::size_t count : kSizes) {
        const std::string suffix = ", " + std::to_string(count);
        const auto compare = [&](const char* what, const char* measured, const std::string& mode, Limit limit) {
            suite.compare(2, withSize(what, count), measured + suffix + mode, "path: bare table" + suffix + mode,
                          limit);
        };
        addForms<false>(suffix, count);
        compare("path, bare table, throughput", "path: unresolved set", "", Limit::atMost(1.7));
        compare("path, bare table, throughput, handles known", "path: resolved set", "", Limit::atMost(1.7));
        addPlainForm(suite, suffix, count);
        addForms<true>(suffix + ", one by one", count);
        compare("path, bare table, one by one", "path: unresolved set", ", one by one", Limit{});
    }
}

}  // namespace ks_bench
