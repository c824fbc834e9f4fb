#pragma once

#include <boost/smart_ptr/shared_ptr.hpp>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "memory_host/kestrel/model.h"
#include "signals/instrumented_signals.h"
#include "signals/signal_specification.h"

/// The signals that are measured, and the questions about them. Everything is the same at each run.
namespace ks_bench {

inline constexpr const char16_t* kModelName = u"plant";
inline constexpr std::size_t kSizes[] = {100, 10'000, 1'000'000};

using SignalPtr = boost::shared_ptr<ks_hmi::SignalSpecification>;

/// Path of block `number`; with the model's name and the port it makes a key of 59 characters.
std::u16string blockPath(std::size_t number);
/// Fractional, as a modelling environment's handles are.
double blockHandle(std::size_t number);

/// A signal on port 1 of the block: resolved to its handle, or not yet.
SignalPtr resolvedSignal(std::size_t number);
SignalPtr unresolvedSignal(std::size_t number);
/// The activity "Self" of a state with that SSID in a chart.
SignalPtr chartSignal(std::size_t number);

using MakeSignal = SignalPtr (*)(std::size_t number);
std::unique_ptr<ks_hmi::InstrumentedSignals> makeSet(std::size_t count, MakeSignal make);
/// One such set for each size, kept for the whole run.
ks_hmi::InstrumentedSignals& sharedSet(std::size_t count, MakeSignal make);

/// A model with the blocks of that many signals, each with one output port.
kestrel::Model makeModel(std::size_t blocks);

/// Block numbers in random order; those from `count` on are in no set of `count` signals. Half of them are.
/// Their number is a power of 2.
std::vector<std::size_t> randomBlocks(std::size_t count);

/// "isPortObserved by handle, 10000 signals"
std::string withSize(const char* name, std::size_t count);

/// Waits until everything before is done, so that the next question starts where the last one ended.
inline void waitForAnswer() noexcept {
#if defined(__x86_64__)
    __asm__ volatile("lfence" ::: "memory");
#else
    __asm__ volatile("" ::: "memory");
#endif
}

}  // namespace ks_bench
