#pragma once

#include <boost/smart_ptr/intrusive_ptr.hpp>

#include <array>
#include <cstddef>
#include <cstring>
#include <type_traits>
#include <variant>

#include "host/hv_array.h"
#include "memory_host/orvex/values/field_names.h"
#include "memory_host/orvex/values/shared_array.h"
#include "memory_host/orvex/values/values.h"

void intrusive_ptr_add_ref(const hvArray* value) noexcept;
void intrusive_ptr_release(const hvArray* value) noexcept;

/// What is in values.
namespace orvex {

/// The elements of a numeric, logical or character array as bytes; the value's class says what they are. A few are
/// stored in place; more are shared by copies until one of them is written.
class Elements {
public:
    /// Zeros.
    explicit Elements(std::size_t bytes) : m_many(bytes > kInPlace ? SharedArray<std::byte>::make(bytes) : nullptr) {}
    /// One element.
    template <class T>
    requires std::is_arithmetic_v<T>
    static Elements of(T value) noexcept {
        Elements one(0);
        static_assert(sizeof value <= kInPlace);
        std::memcpy(one.m_few.data(), &value, sizeof value);
        return one;
    }

    /// Whatever there is, to be written throughout before it is read.
    static Elements unwritten(std::size_t bytes) {
        Elements some(0);
        if (bytes > kInPlace) some.m_many = SharedArray<std::byte>::makeUnwritten(bytes);
        return some;
    }

    const void* data() const noexcept { return m_many ? m_many->data() : m_few.data(); }
    /// Of values of the same class and size.
    bool operator==(const Elements& other) const noexcept {
        const std::size_t bytes = m_many ? m_many->size() : kInPlace;
        return std::memcmp(data(), other.data(), bytes) == 0;
    }
    void* dataForWriting() {
        if (m_many && m_many->isShared()) m_many = SharedArray<std::byte>::copyOf(*m_many);
        return m_many ? m_many->data() : m_few.data();
    }

private:
    static constexpr std::size_t kInPlace = 24;
    alignas(8) std::array<std::byte, kInPlace> m_few{};
    SharedArray<std::byte>::Ptr m_many;
};

/// One of the owners of a value: copies of a container share what is in it, and a running call keeps its inputs.
using SharedValue = boost::intrusive_ptr<hvArray>;

/// The values in a struct or cell array; null where there is none. Shared by copies until one of them is written; the
/// values themselves stay shared, nobody changes them while they are in a container.
class Children {
public:
    explicit Children(std::size_t count) : m_values(count > 0 ? SharedArray<SharedValue>::make(count) : nullptr) {}

    std::size_t size() const noexcept { return m_values ? m_values->size() : 0; }
    const SharedValue& operator[](std::size_t position) const noexcept { return m_values->data()[position]; }
    SharedValue& forWriting(std::size_t position) {
        if (m_values->isShared()) m_values = SharedArray<SharedValue>::copyOf(*m_values);
        return m_values->data()[position];
    }

    /// Whether copies have them, too.
    bool isShared() const noexcept { return m_values && m_values->isShared(); }
    /// Puts the value there and gives back what was there, where nothing is shared.
    SharedValue exchange(std::size_t position, SharedValue value) noexcept {
        m_values->data()[position].swap(value);
        return value;
    }

private:
    SharedArray<SharedValue>::Ptr m_values;
};

struct StructData {
    FieldNames::Ptr names;
    Children values;  ///< the fields of the first element, then those of the second, ...

    /// Position of the name, or -1.
    int fieldNumber(const char* name) const noexcept { return names->find(name); }
};
struct CellData {
    Children cells;
};

/// `CellData` without cells is what a value that is gone holds.
using Payload = std::variant<Elements, StructData, CellData, Objects>;

}  // namespace orvex
