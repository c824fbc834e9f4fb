#pragma once

#include <functional>
#include <new>
#include <string>

#include "host/messages.h"
#include "memory_host/orvex/account/faults.h"
#include "tests/support/failing_allocations.h"

namespace ks_test {

/// How one attempt ended.
enum class Ending { completed, threwHostError, threwNoMemory };

template <class Action>
Ending endingOf(Action action) {
    try {
        action();
        return Ending::completed;
    } catch (const kssvIException&) {
        return Ending::threwHostError;
    } catch (const std::bad_alloc&) {
        return Ending::threwNoMemory;
    }
}

/// What every failure is made in: a state that is built anew for each, and asked about afterwards.
template <class World>
struct SweptOperation {
    std::string name;
    std::function<void(World&)> action;
};

/// Makes failure 1, 2, 3, ... of `operation` until it completes untouched, each once alone and once with all that
/// comes after it. `makeFailure(n, andEverythingAfter)` gives an object that fails things while it lives and
/// counts them in `fired()`. After each, `check` is given the state, how the attempt ended, and words for where.
/// Returns how many failures were made.
template <class World, class MakeFailure, class Check>
std::size_t sweep(const SweptOperation<World>& operation, const std::string& kind, MakeFailure makeFailure,
                  Check check) {
    std::size_t points = 0;
    for (const bool andEverythingAfter : {false, true}) {
        for (std::size_t n = 1;; ++n) {
            World world;
            Ending ending = Ending::completed;
            std::size_t fired = 0;
            {
                const auto failure = makeFailure(n, andEverythingAfter);
                ending = endingOf([&] { operation.action(world); });
                fired = failure.fired();
            }
            if (fired == 0) break;
            ++points;
            check(world, ending,
                  operation.name + ", " + kind + ' ' + std::to_string(n) + (andEverythingAfter ? " and after" : ""));
        }
    }
    return points;
}

/// All kinds of host failures, and the words for them.
inline constexpr struct {
    orvex::FaultKind kind;
    const char* name;
} kHostFailures[] = {
    {orvex::FaultKind::refusal, "refusal"},        {orvex::FaultKind::exception, "exception"},
    {orvex::FaultKind::outOfMemory, "no memory"},  {orvex::FaultKind::emptyResult, "empty result"},
    {orvex::FaultKind::nullResult, "null result"}, {orvex::FaultKind::wrongClass, "result of another class"},
};

template <class World, class Check>
std::size_t sweepHostFailures(const SweptOperation<World>& operation, Check check) {
    std::size_t points = 0;
    for (const auto& failure : kHostFailures) {
        const auto make = [&](std::size_t n, bool andEverythingAfter) {
            return orvex::FaultInjection(orvex::FaultPlan{n, andEverythingAfter, failure.kind});
        };
        points += sweep(operation, failure.name, make, check);
    }
    return points;
}

template <class World, class Check>
std::size_t sweepAllocations(const SweptOperation<World>& operation, Check check) {
    const auto make = [](std::size_t n, bool andEverythingAfter) { return FailingAllocations(n, andEverythingAfter); };
    return sweep(operation, "allocation", make, check);
}

}  // namespace ks_test
