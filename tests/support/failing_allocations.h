#pragma once

#include <cstddef>

namespace ks_test {

/// Fails C++ allocations of the whole process, the libraries' included, while it lives: number `failAt` (1-based),
/// and all after it when asked to. At most one lives at a time. With a sanitizer, whose own allocator stays, it
/// counts and fails nothing. Thread: allocations of other threads are left alone.
class FailingAllocations {
public:
    FailingAllocations(std::size_t failAt, bool andEverythingAfter) noexcept;
    FailingAllocations(const FailingAllocations&) = delete;
    FailingAllocations& operator=(const FailingAllocations&) = delete;
    ~FailingAllocations();

    /// How many allocations were made to fail.
    std::size_t fired() const noexcept;
    /// False in programs built with a sanitizer.
    static bool arePossible() noexcept;
};

}  // namespace ks_test
