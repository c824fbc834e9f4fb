#pragma once

#include <cstddef>

/// What is allocated in this process, its shared libraries included.
namespace ks_bench {

/// Counts while it lives. Not nested.
class AllocationCount {
public:
    AllocationCount() noexcept;
    AllocationCount(const AllocationCount&) = delete;
    AllocationCount& operator=(const AllocationCount&) = delete;
    ~AllocationCount();

    /// Allocations since this began to count.
    std::size_t allocations() const noexcept;
    /// Bytes that the heap gave out and did not get back since then, its own bookkeeping included.
    std::size_t heldBytes() const noexcept;
};

}  // namespace ks_bench
