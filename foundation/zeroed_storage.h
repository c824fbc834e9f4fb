#pragma once

#include <cstddef>
#include <new>

namespace foundation::core::except::detail {

/// The foundation's out-of-memory exception; thrown through Boost's cloning wrapper.
class __attribute__((visibility("default"))) bad_alloc_impl : public std::bad_alloc {
public:
    const char* what() const noexcept override;
};

}  // namespace foundation::core::except::detail

namespace ks_hmi_foundation {

/// Base of the descriptions that the host takes over: zero-filled storage that the host's `utFree` releases.
class ZeroedStorage {
public:
    /// Throws `bad_alloc_impl` when there is no memory.
    static void* operator new(std::size_t size);
    static void operator delete(void* storage) noexcept;

protected:
    ZeroedStorage() = default;
    ~ZeroedStorage() = default;
};

}  // namespace ks_hmi_foundation
