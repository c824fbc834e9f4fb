#pragma once

#include "foundation/errors.h"
#include "host/hv_array.h"
#include "host/object_system.h"

/// The native instance behind a host object. `T` is a set.
namespace ks_hmi_foundation {

/// The instance behind element 0, not owned; null for a null or empty value and for another class.
template <class T>
T* nativeObject(const hvArray* value, hos::InternedName fullClassName) noexcept {
    if (hvIsEmpty(value)) return nullptr;
    return static_cast<T*>(hos::getNativeInstance(omGetArrayElement(value, 0), fullClassName));
}

/// The same, never null: raises `InvalidObject` where there is none.
template <class T>
T& requireNativeObject(const hvArray* value, const char* className) {
    T* const instance = T::getFromHvArray(value);
    if (instance == nullptr) plv_hmi_foundation::errors::raise(plv_hmi_foundation::errors::InvalidObject(className));
    return *instance;
}

/// No value at all, or exactly one object of the class.
inline bool isNoneOrOneOf(const hvArray* value, const char* className) noexcept {
    return hvIsEmpty(value) || (hvGetNumberOfElements(value) == 1 && hvIsA(value, className));
}

}  // namespace ks_hmi_foundation
