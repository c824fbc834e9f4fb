#pragma once

#include <boost/smart_ptr/intrusive_ptr.hpp>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "host/api.h"
#include "host/hv_array.h"
#include "host/object_system.h"
#include "memory_host/orvex/account/ledger.h"
#include "memory_host/orvex/values/values.h"

/// What a host value is made of. For the memory host itself, and not installed: everybody else uses the operations in
/// host/ and in values.h.
void intrusive_ptr_add_ref(const hvArray* value) noexcept;
void intrusive_ptr_release(const hvArray* value) noexcept;

namespace orvex {

/// The lengths of a value, at least two; trailing lengths of 1 beyond the second are dropped.
class OX_API Dimensions {
public:
    Dimensions(std::size_t rows, std::size_t columns) noexcept : m_two{rows, columns} {}
    /// A single length N means N x 1. Throws for an empty list and for more elements than memory can hold.
    explicit Dimensions(std::span<const std::size_t> lengths);

    std::size_t count() const noexcept { return m_more.empty() ? m_two.size() : m_more.size(); }
    const std::size_t* data() const noexcept { return m_more.empty() ? m_two.data() : m_more.data(); }
    std::span<const std::size_t> lengths() const noexcept { return {data(), count()}; }
    std::size_t elements() const noexcept { return m_more.empty() ? m_two[0] * m_two[1] : product(); }
    /// "2x3x4"
    std::string text() const;

private:
    std::size_t product() const noexcept;

    std::array<std::size_t, 2> m_two{};
    std::vector<std::size_t> m_more;  ///< all of them, when there are more than two
};

/// The elements of a numeric, logical or character array. A few are stored in place; more are shared by copies until
/// one of them is written.
template <class T>
class Buffer {
public:
    /// Zeros.
    explicit Buffer(std::size_t size = 1)
        : m_many(size > kInPlace ? std::make_shared<T[]>(size) : nullptr), m_size(size) {}

    std::size_t size() const noexcept { return m_size; }
    const T* data() const noexcept { return m_many ? m_many.get() : m_few.data(); }
    T* dataForWriting() {
        if (m_many.use_count() > 1) {
            const std::shared_ptr<T[]> own = std::make_shared<T[]>(m_size);
            std::copy_n(m_many.get(), m_size, own.get());
            m_many = own;
        }
        return m_many ? m_many.get() : m_few.data();
    }

private:
    static constexpr std::size_t kInPlace = 16 / sizeof(T);
    std::array<T, kInPlace> m_few{};
    std::shared_ptr<T[]> m_many;
    std::size_t m_size;
};

using Text = Buffer<char16_t>;

/// One of the owners of a value: copies of a container share what is in it, and a running call keeps its inputs.
using SharedValue = boost::intrusive_ptr<hvArray>;

/// The values in a struct or cell array; null where there is none. Shared by copies until one of them is written; the
/// values themselves stay shared, nobody changes them while they are in a container.
class OX_API Children {
public:
    Children() = default;
    explicit Children(std::size_t count)
        : m_values(count > 0 ? std::make_shared<SharedValue[]>(count) : nullptr), m_count(count) {}

    std::size_t size() const noexcept { return m_count; }
    const SharedValue& operator[](std::size_t position) const noexcept { return m_values.get()[position]; }
    SharedValue& forWriting(std::size_t position);

private:
    std::shared_ptr<SharedValue[]> m_values;
    std::size_t m_count = 0;
};

/// A struct's field names in order.
class FieldNames {
public:
    explicit FieldNames(std::vector<std::string> names);

    auto begin() const noexcept { return m_names.begin(); }
    auto end() const noexcept { return m_names.end(); }
    std::size_t size() const noexcept { return m_names.size(); }
    const std::string& operator[](std::size_t position) const noexcept { return m_names[position]; }
    /// Position of the name, or -1. Fastest when the names are asked for in their order.
    int find(std::string_view name) const noexcept;
    /// A name that is there more than once; null when there is none.
    const std::string* repeated() const noexcept;

private:
    /// Position of the name, or the number of names.
    std::size_t searched(std::string_view name) const noexcept;

    std::vector<std::string> m_names;
    std::vector<std::size_t> m_byName;  ///< positions, sorted by name
    mutable std::size_t m_next = 0;     ///< the position after the one found last
};

struct StructData {
    std::shared_ptr<const FieldNames> names;
    Children values;  ///< the fields of the first element, then those of the second, ...

    /// Position of the name, or -1.
    int fieldNumber(std::string_view name) const noexcept { return names->find(name); }
};
struct CellData {
    Children cells;
};

using Payload =
    std::variant<Buffer<double>, Buffer<bool>, Text, Buffer<float>, Buffer<std::int8_t>, Buffer<std::uint8_t>,
                 Buffer<std::int16_t>, Buffer<std::uint16_t>, Buffer<std::int32_t>, Buffer<std::uint32_t>,
                 Buffer<std::int64_t>, Buffer<std::uint64_t>, StructData, CellData, Objects>;

/// Who sees to the end of a value. See local_scope.h.
enum class Lifetime : std::uint8_t {
    owned,      ///< made outside any host call
    loose,      ///< made or handed out in the running call, and given no scope yet
    local,      ///< in the local scope
    scoped,     ///< given a scope: outlives the call
    contained,  ///< in a struct or a cell, which owns it
    expired,    ///< was left in a local scope that has ended
};

}  // namespace orvex

struct hvArray {
    hvArray(hvClassID classId, orvex::Dimensions dimensions, orvex::Payload&& payload,
            const orvex::Site& site) noexcept;
    hvArray(const hvArray&) = delete;
    hvArray& operator=(const hvArray&) = delete;
    ~hvArray();

    hvClassID m_class;
    bool m_fromFile = false;
    orvex::Lifetime m_lifetime = orvex::Lifetime::owned;
    /// See SharedValue.
    mutable std::uint32_t m_owners = 1;
    orvex::Dimensions m_dimensions;
    orvex::Payload m_payload;
    /// In the list of local or of loose values: the next one, and what points here; null outside them.
    hvArray* m_next = nullptr;
    hvArray** m_place = nullptr;
    orvex::LedgerEntry m_ledger;
};

inline void intrusive_ptr_add_ref(const hvArray* value) noexcept { ++value->m_owners; }
inline void intrusive_ptr_release(const hvArray* value) noexcept {
    if (--value->m_owners == 0) delete value;
}

namespace orvex {

/// A new value. `payload` has as many elements as `dimensions` say. No counting point for faults.
OX_API HvArrayPtr makeValue(hvClassID classId, Dimensions dimensions, Payload&& payload, const Site& site);
/// An object array; counts as creating a value.
OX_API HvArrayPtr makeObjectArray(Dimensions dimensions, Objects objects, const Site& site);

/// The value as one in a container; takes it out of any scope.
SharedValue contained(HvArrayPtr value) noexcept;

/// The payload as T, or null for null and for a value of another class. What copies share is taken apart by
/// `dataForWriting` and `forWriting` only.
template <class T>
const T* payloadOf(const hvArray* value) noexcept {
    return value ? std::get_if<T>(&value->m_payload) : nullptr;
}
template <class T>
T* payloadOf(hvArray* value) noexcept {
    return value ? std::get_if<T>(&value->m_payload) : nullptr;
}
/// The objects of an object array, borrowed; null for any other value.
inline const Objects* objectsOf(const hvArray* value) noexcept { return payloadOf<Objects>(value); }

}  // namespace orvex
