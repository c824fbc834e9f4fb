#include "foundation/errors.h"

#include <cstdint>
#include <cstdio>
#include <exception>

#include "host/services.h"

namespace plv_hmi_foundation::errors {

namespace {

constexpr const char* kCatalogue = "plv_hmi_foundation:errors";

std::int64_t elementNumber(std::size_t number) { return static_cast<std::int64_t>(number); }

}  // namespace

// Kept: the number of elements and not the position; the host's message says how many there are.
InvalidElementIndex::InvalidElementIndex(long count)
    : BaseMsgID(kCatalogue, "InvalidElementIndex", {std::int64_t{count}}) {}

SignalObserversSetParamNonScalar::SignalObserversSetParamNonScalar()
    : BaseMsgID(kCatalogue, "SignalObserversSetParamNonScalar") {}

SignalObserversSetParamInvalidType::SignalObserversSetParamInvalidType()
    : BaseMsgID(kCatalogue, "SignalObserversSetParamInvalidType") {}

MissingField::MissingField(const char* field, std::size_t element)
    : BaseMsgID(kCatalogue, "MissingField", {std::string(field), elementNumber(element)}) {}

InvalidFieldValue::InvalidFieldValue(const char* field, std::size_t element)
    : BaseMsgID(kCatalogue, "InvalidFieldValue", {std::string(field), elementNumber(element)}) {}

InvalidObject::InvalidObject(const char* className)
    : BaseMsgID(kCatalogue, "InvalidObject", {std::string(className)}) {}

NullRecord::NullRecord() : BaseMsgID(kCatalogue, "NullRecord") {}

void raise(const resource_core::BaseMsgID& id) {
    kssvThrowIExceptionFromDiagnostic(kssvCreateDiagnostic(id, std::string()), nullptr);
    std::fputs("unreachable\n", stderr);
    std::terminate();
}

void requirePosition(std::size_t index, std::size_t count) {
    if (index >= count) raise(InvalidElementIndex(static_cast<long>(count)));
}

}  // namespace plv_hmi_foundation::errors
