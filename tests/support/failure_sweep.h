#pragma once

#include <functional>
#include <new>
#include <string>

#include "tests/support/host_test.h"

namespace ks_test {

/// Fails host operation 1, 2, 3, ... of `action` until it completes untouched, each once alone and once with all
/// after it, in every way that a host operation can fail. After each, `check` says whether the state is as
/// documented. Returns how many failures were made.
inline std::size_t sweepHostFailures(const std::string& name, const std::function<void()>& action,
                                     const std::function<void(const std::string&)>& check) {
    using Kind = orvex::FaultKind;
    std::size_t points = 0;
    for (const Kind kind :
         {Kind::refusal, Kind::exception, Kind::outOfMemory, Kind::emptyResult, Kind::nullResult, Kind::wrongClass}) {
        for (const bool andEverythingAfter : {false, true}) {
            for (std::size_t n = 1;; ++n) {
                orvex::FaultInjection faults(orvex::FaultPlan{n, andEverythingAfter, kind});
                try {
                    action();
                } catch (const kssvIException&) {
                } catch (const std::bad_alloc&) {
                }
                if (faults.fired() == 0) break;
                ++points;
                const orvex::FaultInjection unharmed;
                check(name + ", kind " + std::to_string(static_cast<int>(kind)) + ", operation " + std::to_string(n) +
                      (andEverythingAfter ? " and after" : ""));
            }
        }
    }
    return points;
}

}  // namespace ks_test
