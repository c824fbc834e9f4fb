#include <memory>

#include "benchmarks/asking.h"
#include "benchmarks/bare_tables.h"
#include "benchmarks/plain_form.h"
#include "benchmarks/sample_signals.h"
#include "benchmarks/suite.h"

// "Is this port of this block observed?", by the block's handle.
namespace ks_bench {

namespace {

struct Question {
    double handle;
    int port;
};

const std::vector<Question>& questions(std::size_t count) {
    static std::map<std::size_t, std::vector<Question>> s_questions;
    auto& list = s_questions[count];
    if (list.empty())
        for (const std::size_t block : randomBlocks(count)) list.push_back({blockHandle(block), 1});
    return list;
}

const bare::Table<bare::HandleKey>& bareTable(std::size_t count) {
    static std::map<std::size_t, bare::Table<bare::HandleKey>> s_tables;
    auto& table = s_tables[count];
    if (!table.empty()) return table;
    const auto& set = sharedSet(count, resolvedSignal);
    for (std::size_t i = 0; i < count; ++i) {
        const ks_hmi::SignalSpecification* const signal = set.get(i);
        table.emplace(bare::HandleKey(signal->m_cachedBlockHandle, signal->m_cachedPortIdx), signal);
    }
    return table;
}

const plain::Table& plainTable(std::size_t count) {
    static std::map<std::size_t, plain::Table> s_tables;
    auto& table = s_tables[count];
    if (!table.empty()) return table;
    const auto& set = sharedSet(count, resolvedSignal);
    for (std::size_t i = 0; i < count; ++i) {
        const auto signal = set.share(i);
        table.emplace(plain::handleKey(signal->m_cachedBlockHandle, signal->m_cachedPortIdx), signal);
    }
    return table;
}

// Questions that `ask` answers otherwise than the set are an error; the first pass warms up as well.
template <class Ask>
bool agreesWithSet(std::size_t count, Ask ask) {
    const auto& set = sharedSet(count, resolvedSignal);
    for (const Question& question : questions(count))
        if (ask(question) != set.isPortObserved(question.handle, question.port)) return false;
    return true;
}

template <bool kOneByOne, class Ask>
void askAll(benchmark::State& state, std::size_t count, Ask ask) {
    if (!agreesWithSet(count, ask)) return state.SkipWithError("the answers differ");
    const std::vector<Question>& list = questions(count);
    askInTurn<kOneByOne>(state, list, ask);
}

template <bool kOneByOne>
void addForms(const std::string& suffix, std::size_t count) {
    Suite::time("handle: set" + suffix, [count](benchmark::State& state) {
        const auto& set = sharedSet(count, resolvedSignal);
        askAll<kOneByOne>(state, count, [&](const Question& q) { return set.isPortObserved(q.handle, q.port); });
    });
    Suite::time("handle: bare table" + suffix, [count](benchmark::State& state) {
        const auto& table = bareTable(count);
        askAll<kOneByOne>(state, count,
                          [&](const Question& q) { return bare::isPortObserved(table, q.handle, q.port); });
    });
}

void addPlainForm(Suite& suite, const std::string& suffix, std::size_t count) {
    Suite::time("handle: plain form" + suffix, [count](benchmark::State& state) {
        const auto& table = plainTable(count);
        askAll<false>(state, count, [&](const Question& q) { return plain::isPortObserved(table, q.handle, q.port); });
    });
    suite.speedUp(1, withSize("handle and port, plain form, throughput", count), "handle: set" + suffix,
                  "handle: plain form" + suffix, count < 1'000'000 ? Limit::atLeast(15) : Limit{});
}

}  // namespace

void addHandleQueries(Suite& suite) {
    for (const std::size_t count : kSizes) {
        const std::string suffix = ", " + std::to_string(count);
        addForms<false>(suffix, count);
        suite.compare(1, withSize("handle and port, bare table, throughput", count), "handle: set" + suffix,
                      "handle: bare table" + suffix, Limit::atMost(1.25));
        addPlainForm(suite, suffix, count);
        addForms<true>(suffix + ", one by one", count);
        suite.compare(1, withSize("handle and port, bare table, one by one", count),
                      "handle: set" + suffix + ", one by one", "handle: bare table" + suffix + ", one by one", Limit{});
    }
}

}  // namespace ks_bench
