#include "memory_host/orvex/values/small_storage.h"

#include <boost/pool/pool.hpp>

#include <array>
#include <cstdlib>
#include <new>
#include <string_view>

namespace orvex {
namespace {

constexpr std::size_t kStep = 16;
constexpr std::size_t kLargestSmall = 512;
// What the pools ask the heap for at once, at most.
constexpr std::size_t kLargestChunk = std::size_t{64} * 1024;
// So much is kept even when nothing is in use.
constexpr std::size_t kKeptAnyway = std::size_t{1024} * 1024;

constinit StorageCounts g_counts;

struct CountedHeap {
    using size_type = std::size_t;
    using difference_type = std::ptrdiff_t;

    // The size stands in front, behind which the alignment is that of the heap.
    static char* malloc(size_type bytes) noexcept {
        auto* const chunk = static_cast<std::size_t*>(::operator new(bytes + kStep, std::nothrow));
        if (!chunk) return nullptr;
        *chunk = bytes;
        g_counts.bytes += bytes;
        return reinterpret_cast<char*>(chunk) + kStep;
    }
    static void free(char* storage) noexcept {
        auto* const chunk = reinterpret_cast<std::size_t*>(storage - kStep);
        g_counts.bytes -= *chunk;
        ::operator delete(chunk);
    }
};
using Pool = boost::pool<CountedHeap>;

// By size in steps; made when first needed, and never destroyed: values may outlive everything else.
constinit std::array<Pool*, kLargestSmall / kStep + 1> g_pools{};

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kIsWatched = true;
#elif defined(__has_feature)
constexpr bool kIsWatched = __has_feature(address_sanitizer) || __has_feature(thread_sanitizer);
#else
constexpr bool kIsWatched = false;
#endif

bool isKept() noexcept {
    static const bool isAskedFor = [] {
        const char* const wanted = std::getenv("KS_HMI_HOST_STORAGE");
        return kIsWatched || (wanted && std::string_view(wanted) == "heap");
    }();
    return !isAskedFor;
}

Pool** poolFor(std::size_t bytes) noexcept {
    return bytes <= kLargestSmall ? &g_pools[(bytes + kStep - 1) / kStep] : nullptr;
}

void* takenFrom(Pool& pool) {
    void* const storage = pool.malloc();
    if (!storage) throw std::bad_alloc();
    ++g_counts.inUse;
    return storage;
}

void* takenForTheFirstTime(Pool** pool, std::size_t bytes) {
    if (!pool || !isKept()) return ::operator new(bytes);
    const std::size_t size = bytes == 0 ? kStep : (bytes + kStep - 1) / kStep * kStep;
    *pool = new Pool(size, kLargestChunk / size / 8, kLargestChunk / size);
    return takenFrom(**pool);
}

void releaseAll() noexcept {
    for (Pool* const pool : g_pools)
        if (pool) pool->purge_memory();
}

}  // namespace

void* takeStorage(std::size_t bytes) {
    Pool** const pool = poolFor(bytes);
    return pool && *pool ? takenFrom(**pool) : takenForTheFirstTime(pool, bytes);
}

void giveStorageBack(void* storage, std::size_t bytes) noexcept {
    Pool** const pool = poolFor(bytes);
    if (!pool || !*pool) return ::operator delete(storage);
    (*pool)->free(storage);
    if (--g_counts.inUse == 0 && g_counts.bytes > kKeptAnyway) releaseAll();
}

StorageCounts storageCounts() noexcept { return g_counts; }

}  // namespace orvex
