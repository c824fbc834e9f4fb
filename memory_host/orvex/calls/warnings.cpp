#include "memory_host/orvex/calls/warnings.h"

#include <utility>

namespace orvex {
namespace {

struct State {
    std::vector<Warning> recorded;
    WarningSink sink;
};

// Never destroyed: libraries that are unloaded late still warn.
State& state() {
    static State& instance = *new State;
    return instance;
}

}  // namespace

const std::vector<Warning>& warnings() noexcept { return state().recorded; }

void clearWarnings() noexcept { state().recorded.clear(); }

WarningSink setWarningSink(WarningSink sink) noexcept { return std::exchange(state().sink, std::move(sink)); }

void warn(Warning warning) noexcept {
    try {
        const WarningSink sink = state().sink;
        state().recorded.push_back(warning);
        if (sink) sink(warning);
    } catch (...) {
        // A warning is never worth more than what it warns of.
    }
}

}  // namespace orvex
