#pragma once

#include <benchmark/benchmark.h>

#include <cstddef>
#include <vector>

#include "benchmarks/sample_signals.h"

namespace ks_bench {

/// Asks one question of the list after the other, over and over; their number is a power of two. `kOneByOne`: each
/// waits for the answer to the last.
template <bool kOneByOne, class Question, class Ask>
void askInTurn(benchmark::State& state, const std::vector<Question>& list, Ask ask) {
    const std::size_t mask = list.size() - 1;
    std::size_t at = 0;
    std::size_t hits = 0;
    for ([[maybe_unused]] auto _ : state) {
        hits += static_cast<std::size_t>(ask(list[at]));
        at = (at + 1) & mask;
        if constexpr (kOneByOne) waitForAnswer();
    }
    benchmark::DoNotOptimize(hits);
}

}  // namespace ks_bench
