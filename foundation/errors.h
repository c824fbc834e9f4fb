#pragma once

#include <cstddef>
#include <string>

#include "host/messages.h"

/// The one way in which the library reports an error: a message identifier of the catalogue
/// "plv_hmi_foundation:errors", thrown as the host's exception. Warnings are never built here.
namespace plv_hmi_foundation::errors {

/// A position outside a set. The argument is the number of elements, not the position.
class InvalidElementIndex final : public resource_core::BaseMsgID {
public:
    explicit InvalidElementIndex(long count);
};

/// A model's observers set from a value that is neither empty nor 1x1.
class SignalObserversSetParamNonScalar final : public resource_core::BaseMsgID {
public:
    SignalObserversSetParamNonScalar();
};

/// A model's observers set from a value of another class than "Kestrel.HMI.ModelObservers".
class SignalObserversSetParamInvalidType final : public resource_core::BaseMsgID {
public:
    SignalObserversSetParamInvalidType();
};

/// A saved or host-side record lacks a field; names the field and the 1-based number of the element.
class MissingField final : public resource_core::BaseMsgID {
public:
    MissingField(const char* field, std::size_t element);
};

/// A field holds a value that cannot be read as its kind; names the field and the 1-based number of the element.
class InvalidFieldValue final : public resource_core::BaseMsgID {
public:
    InvalidFieldValue(const char* field, std::size_t element);
};

/// A host value is not an object of the class that it has to be; names the class.
class InvalidObject final : public resource_core::BaseMsgID {
public:
    explicit InvalidObject(const char* className);
};

/// A null record handed to a set.
class NullRecord final : public resource_core::BaseMsgID {
public:
    NullRecord();
};

/// Throws `id` as the host's exception.
[[noreturn]] void raise(const resource_core::BaseMsgID& id);

/// Raises `InvalidElementIndex` unless `index` is less than `count`.
void requirePosition(std::size_t index, std::size_t count);

/// Raises `NullRecord` for a null pointer.
template <class Pointer>
void requireRecord(const Pointer& record) {
    if (!record) raise(NullRecord());
}

}  // namespace plv_hmi_foundation::errors
