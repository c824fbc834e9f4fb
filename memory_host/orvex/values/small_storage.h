#pragma once

#include <cstddef>

#include "host/api.h"

/// Storage of values and of what is in them: small pieces, which come and go in great numbers, are kept by size when
/// they are given back, and taken again. Sanitizers, and a process with the environment variable
/// KS_HMI_HOST_STORAGE=heap, get every piece from the heap by itself, so that what watches the heap sees each of them.
/// Thread: the interpreter thread only.
namespace orvex {

/// `bytes` of storage, aligned for every plain type. Throws `std::bad_alloc`.
void* takeStorage(std::size_t bytes);
/// `bytes` as they were taken.
void giveStorageBack(void* storage, std::size_t bytes) noexcept;

/// What is kept by size.
struct StorageCounts {
    std::size_t inUse = 0;  ///< pieces that are taken
    std::size_t bytes = 0;  ///< of all that was got from the heap for pieces, in use or not
};
/// Both 0 where nothing is kept. More than a little goes back to the heap when nothing is in use any more.
OX_API StorageCounts storageCounts() noexcept;

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
