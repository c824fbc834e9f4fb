#pragma once

#include <boost/smart_ptr/intrusive_ptr.hpp>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <type_traits>

#include "memory_host/orvex/values/small_storage.h"

namespace orvex {

/// An array in one piece of storage that copies of a value own together, until one of them writes and takes its own.
template <class T>
class alignas(std::max_align_t) SharedArray {
public:
    using Ptr = boost::intrusive_ptr<SharedArray>;

    /// `count` elements as `T()` makes them.
    static Ptr make(std::size_t count) {
        Ptr made = unwritten(count);
        std::uninitialized_value_construct_n(made->data(), count);
        return made;
    }
    /// The same with whatever is in the storage.
    static Ptr makeUnwritten(std::size_t count) requires std::is_trivially_default_constructible_v<T> {
        return unwritten(count);
    }
    static Ptr copyOf(const SharedArray& other) {
        Ptr made = unwritten(other.m_count);
        std::uninitialized_copy_n(other.data(), other.m_count, made->data());
        return made;
    }

    bool isShared() const noexcept { return m_owners > 1; }
    std::size_t size() const noexcept { return m_count; }
    T* data() noexcept { return reinterpret_cast<T*>(this + 1); }
    const T* data() const noexcept { return reinterpret_cast<const T*>(this + 1); }

    friend void intrusive_ptr_add_ref(SharedArray* array) noexcept { ++array->m_owners; }
    friend void intrusive_ptr_release(SharedArray* array) noexcept {
        if (--array->m_owners == 0) array->end();
    }

private:
    static_assert(alignof(T) <= alignof(std::max_align_t));

    explicit SharedArray(std::size_t count) noexcept : m_count(count) {}

    // To construct the elements in does not throw: nothing is released that was never made.
    static Ptr unwritten(std::size_t count) {
        return Ptr(new (takeStorage(sizeof(SharedArray) + count * sizeof(T))) SharedArray(count), /*add_ref=*/false);
    }
    void end() noexcept {
        const std::size_t bytes = sizeof(SharedArray) + m_count * sizeof(T);
        std::destroy_n(data(), m_count);
        giveStorageBack(this, bytes);
    }

    std::size_t m_count;
    std::uint32_t m_owners = 1;
};

}  // namespace orvex
