#pragma once

#include <cerrno>
#include <cstddef>

/// System calls that can be made to fail. The program's calls must be linked to those of failing_calls.cpp
/// ("-Wl,--wrap=NAME"), which make them unless it is their turn to fail.
namespace ks_test {

enum class Turn { fails, endsTheProgram, isInterrupted };

struct CallPlan {
    std::size_t at = 0;  ///< which call, 1-based; 0 for none
    Turn turn = Turn::fails;
    int error = EIO;  ///< or the signal that interrupts
    std::size_t calls = 0;
    const char* reached = nullptr;  ///< the call whose turn it was
};
inline CallPlan g_plan;

}  // namespace ks_test
