#pragma once

#include <boost/pool/pool.hpp>

#include <array>
#include <cstddef>
#include <new>

#include "host/api.h"

/// Storage of values and of what is in them: small pieces, which come and go in great numbers, are kept by size when
/// they are given back, and taken again. Sanitizers, and a process with the environment variable
/// KS_HMI_HOST_STORAGE=heap, get every piece from the heap by itself, so that what watches the heap sees each of them.
/// Thread: the interpreter thread only.
namespace orvex {

/// What is kept by size.
struct StorageCounts {
    std::size_t inUse = 0;  ///< pieces that are taken
    std::size_t bytes = 0;  ///< of all that was got from the heap for pieces, in use or not
};
/// Both 0 where nothing is kept. More than a little goes back to the heap when nothing is in use any more.
OX_API StorageCounts storageCounts() noexcept;

namespace internal {

/// Where pools get their storage, in larger pieces.
struct CountedHeap {
    using size_type = std::size_t;
    using difference_type = std::ptrdiff_t;
    static char* malloc(size_type bytes) noexcept;  ///< null when there is none
    static void free(char* storage) noexcept;
};
using StoragePool = boost::pool<CountedHeap>;

inline constexpr std::size_t kStorageStep = 16;
inline constexpr std::size_t kLargestSmallStorage = 512;
/// By size in steps; null until one is needed.
extern std::array<StoragePool*, kLargestSmallStorage / kStorageStep + 1> g_storagePools;
extern StorageCounts g_storageCounts;

/// Null for a size that is not kept.
inline StoragePool** storagePool(std::size_t bytes) noexcept {
    return bytes <= kLargestSmallStorage ? &g_storagePools[(bytes + kStorageStep - 1) / kStorageStep] : nullptr;
}
/// Without a pool: makes it, unless the heap is asked.
void* takeStorageAnew(StoragePool** pool, std::size_t bytes);
/// Nothing is in use.
void releaseKeptStorage() noexcept;

}  // namespace internal

/// `bytes` of storage, aligned for every plain type. Throws `std::bad_alloc`.
inline void* takeStorage(std::size_t bytes) {
    internal::StoragePool** const pool = internal::storagePool(bytes);
    if (!pool || !*pool) return internal::takeStorageAnew(pool, bytes);
    void* const storage = (*pool)->malloc();
    if (!storage) throw std::bad_alloc();
    ++internal::g_storageCounts.inUse;
    return storage;
}
/// `bytes` as they were taken.
inline void giveStorageBack(void* storage, std::size_t bytes) noexcept {
    internal::StoragePool** const pool = internal::storagePool(bytes);
    if (!pool || !*pool) return ::operator delete(storage);
    (*pool)->free(storage);
    if (--internal::g_storageCounts.inUse == 0) internal::releaseKeptStorage();
}

/// Such storage for containers and shared objects.
template <class T>
struct SmallStorage {
    using value_type = T;

    SmallStorage() = default;
    template <class Other>
    SmallStorage(const SmallStorage<Other>&) noexcept {}  // NOLINT(google-explicit-constructor): as allocators do
    T* allocate(std::size_t count) { return static_cast<T*>(takeStorage(count * sizeof(T))); }
    void deallocate(T* storage, std::size_t count) noexcept { giveStorageBack(storage, count * sizeof(T)); }
    friend bool operator==(const SmallStorage&, const SmallStorage&) noexcept { return true; }
};

}  // namespace orvex
