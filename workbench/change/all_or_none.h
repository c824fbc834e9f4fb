#pragma once

#include <exception>

namespace workbench {

/// Does the work. When it throws, what was done of it is taken back, and the same is thrown, also when that fails.
template <class Work, class TakeBack>
void allOrNone(Work&& work, TakeBack&& takeBack) {
    const auto tryToTakeBack = [&]() noexcept {
        try {
            takeBack();
        } catch (const std::exception&) {  // the failure that is on its way says why
        }
    };
    try {
        work();
    } catch (...) {
        tryToTakeBack();
        throw;
    }
}

}  // namespace workbench
