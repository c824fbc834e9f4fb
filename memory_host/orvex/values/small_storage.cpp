#include "memory_host/orvex/values/small_storage.h"

#include <cstdlib>
#include <string_view>

namespace orvex {

namespace {

// What a pool asks the heap for at once: at first, and at most.
constexpr std::size_t kFirstChunk = std::size_t{8} * 1024;
constexpr std::size_t kLargestChunk = std::size_t{64} * 1024;
// So much is kept even when nothing is in use.
constexpr std::size_t kKeptAnyway = std::size_t{1024} * 1024;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kIsWatched = true;
#elif defined(__has_feature)
constexpr bool kIsWatched = __has_feature(address_sanitizer) || __has_feature(thread_sanitizer);
#else
constexpr bool kIsWatched = false;
#endif

bool isHeapAsked() noexcept {
    static const bool isWanted = [] {
        const char* const wanted = std::getenv("KS_HMI_HOST_STORAGE");
        return wanted && std::string_view(wanted) == "heap";
    }();
    return kIsWatched || isWanted;
}

}  // namespace

namespace internal {

// Made when first needed, and never destroyed: values may outlive everything else.
constinit std::array<StoragePool*, kLargestSmallStorage / kStorageStep + 1> g_storagePools{};
constinit StorageCounts g_storageCounts;

// The size stands in front, behind which the alignment is that of the heap.
char* CountedHeap::malloc(size_type bytes) noexcept {
    auto* const chunk = static_cast<std::size_t*>(::operator new(bytes + kStorageStep, std::nothrow));
    if (!chunk) return nullptr;
    *chunk = bytes;
    g_storageCounts.bytes += bytes;
    return reinterpret_cast<char*>(chunk) + kStorageStep;
}

void CountedHeap::free(char* storage) noexcept {
    auto* const chunk = reinterpret_cast<std::size_t*>(storage - kStorageStep);
    g_storageCounts.bytes -= *chunk;
    ::operator delete(chunk);
}

void* takeStorageAnew(StoragePool** pool, std::size_t bytes) {
    if (!pool || isHeapAsked()) return ::operator new(bytes);
    const std::size_t size = bytes == 0 ? kStorageStep : (bytes + kStorageStep - 1) / kStorageStep * kStorageStep;
    *pool = new StoragePool(size, kFirstChunk / size, kLargestChunk / size);
    return takeStorage(bytes);
}

void releaseKeptStorage() noexcept {
    if (g_storageCounts.bytes <= kKeptAnyway) return;
    for (StoragePool* const pool : g_storagePools)
        if (pool) pool->purge_memory();
}

}  // namespace internal

StorageCounts storageCounts() noexcept { return internal::g_storageCounts; }

}  // namespace orvex
