#include "benchmarks/allocations.h"

#include <malloc.h>

#include <cstdint>
#include <cstdlib>
#include <new>

namespace ks_bench {

namespace {

constinit bool g_isCounting = false;
constinit std::size_t g_allocations = 0;
constinit std::int64_t g_heldBytes = 0;

// The word in front of each block is the heap's.
std::int64_t bytesOf(void* block) noexcept {
    return static_cast<std::int64_t>(::malloc_usable_size(block) + sizeof(std::size_t));
}

void* allocate(std::size_t size) {
    void* const block = std::malloc(size);
    if (block == nullptr) throw std::bad_alloc();
    if (g_isCounting) {
        ++g_allocations;
        g_heldBytes += bytesOf(block);
    }
    return block;
}

void release(void* block) noexcept {
    if (g_isCounting && block != nullptr) g_heldBytes -= bytesOf(block);
    std::free(block);
}

}  // namespace

AllocationCount::AllocationCount() noexcept {
    g_allocations = 0;
    g_heldBytes = 0;
    g_isCounting = true;
}
AllocationCount::~AllocationCount() { g_isCounting = false; }

std::size_t AllocationCount::allocations() const noexcept { return g_allocations; }
std::size_t AllocationCount::heldBytes() const noexcept { return static_cast<std::size_t>(g_heldBytes); }

}  // namespace ks_bench

void* operator new(std::size_t size) { return ks_bench::allocate(size); }
void* operator new[](std::size_t size) { return ks_bench::allocate(size); }
void operator delete(void* block) noexcept { ks_bench::release(block); }
void operator delete[](void* block) noexcept { ks_bench::release(block); }
void operator delete(void* block, std::size_t) noexcept { ks_bench::release(block); }
void operator delete[](void* block, std::size_t) noexcept { ks_bench::release(block); }
