#pragma once

#include "foundation/errors.h"
#include "host/hv_array.h"
#include "host/object_system.h"

/// The native instance behind a host object. `T` is a set.
namespace ks_hmi_foundation {

/// Element 0, null for a null or empty value. While it is held the object lives, whatever a script does to the value.
inline hos::ObjectInterface heldObject(const hvArray* value) noexcept {
    return hvIsEmpty(value) ? nullptr : omGetArrayElement(value, 0);
}

/// The instance behind element 0, not owned; null for a null or empty value and for another class.
template <class T>
T* nativeObject(const hvArray* value, hos::InternedName fullClassName) noexcept {
    return static_cast<T*>(hos::getNativeInstance(heldObject(value), fullClassName));
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
