#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <variant>

#include "host/hv_array.h"
#include "memory_host/orvex/account/ledger.h"
#include "memory_host/orvex/account/running_call.h"
#include "memory_host/orvex/account/scope_of_value.h"
#include "memory_host/orvex/values/dimensions.h"
#include "memory_host/orvex/values/payload.h"
#include "memory_host/orvex/values/small_storage.h"
#include "memory_host/orvex/values/values.h"

/// What a host value is made of. For the memory host itself, and not installed: everybody else uses the operations in
/// host/ and in values.h.
namespace orvex {

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

struct hvArray final : orvex::LedgerEntry {
    /// `contents`: a payload, or one of its alternatives.
    template <class Contents>
    hvArray(hvClassID classId, orvex::Dimensions&& dimensions, Contents&& contents, const orvex::Site& site) noexcept
        : LedgerEntry(orvex::LedgerKind::value, site),
          m_class(classId),
          m_dimensions(std::move(dimensions)),
          m_payload(std::forward<Contents>(contents)) {}
    hvArray(const hvArray&) = delete;
    hvArray& operator=(const hvArray&) = delete;
    ~hvArray() {
        if (m_place) orvex::leaveScopes(this);
        // Most values hold elements: their end is nothing to look up.
        if (auto* const elements = std::get_if<orvex::Elements>(&m_payload))
            std::destroy_at(elements);
        else
            std::destroy_at(&m_payload);
    }

    static void* operator new(std::size_t bytes) { return orvex::takeStorage(bytes); }
    static void operator delete(void* storage, std::size_t bytes) noexcept { orvex::giveStorageBack(storage, bytes); }

    hvClassID m_class;
    bool m_fromFile = false;
    orvex::Lifetime m_lifetime = orvex::Lifetime::owned;
    /// See SharedValue.
    mutable std::uint32_t m_owners = 1;
    orvex::Dimensions m_dimensions;
    union {
        orvex::Payload m_payload;  ///< always there
    };
    /// In the list of local or of loose values: the next one, and what points here; null outside them.
    hvArray* m_next = nullptr;
    hvArray** m_place = nullptr;
};

inline void intrusive_ptr_add_ref(const hvArray* value) noexcept { ++value->m_owners; }
inline void intrusive_ptr_release(const hvArray* value) noexcept {
    if (--value->m_owners == 0) delete value;
}

namespace orvex {

/// What `THvArrayDeleter` does.
inline void release(hvArray* value) noexcept {
    if (value->m_lifetime == Lifetime::expired) return reportExpired(value);
    if (value->m_place) leaveScopes(value);
    intrusive_ptr_release(value);
}

/// A new value. `contents`, a payload or one of its alternatives, has as many elements as `dimensions` say. No counting
/// point for faults.
template <class Contents>
HvArrayPtr makeValue(hvClassID classId, Dimensions dimensions, Contents&& contents, const Site& site) {
    HvArrayPtr value(new hvArray(classId, std::move(dimensions), std::forward<Contents>(contents), site));
    if (hostCallDepth() > 0) handOut(value.get());
    return value;
}
/// An object array; counts as creating a value.
HvArrayPtr makeObjectArray(Dimensions dimensions, Objects objects, const Site& site);

/// The value as one in a container; takes it out of any scope.
inline SharedValue contained(HvArrayPtr value) noexcept {
    if (!value) return nullptr;
    if (value->m_place) leaveScopes(value.get());
    value->m_lifetime = Lifetime::contained;
    return SharedValue(value.release(), /*add_ref=*/false);
}

/// A share in a value that is in a container and that nobody changes any more; of any other, a copy. Counts as copying.
HvArrayPtr shareOf(const hvArray* value);

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
