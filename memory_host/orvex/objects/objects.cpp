#include "memory_host/orvex/objects/objects.h"

#include <utility>

#include "memory_host/orvex/account/described_things.h"
#include "memory_host/orvex/account/faults.h"
#include "memory_host/orvex/account/scope_of_value.h"
#include "memory_host/orvex/calls/errors.h"
#include "memory_host/orvex/values/hv_array_impl.h"
#include "memory_host/orvex/values/short_text.h"

namespace {

using orvex::faults::Operation;

// The element, which stays alive while its property is read or written.
hos::ObjectInterface requireElement(const hvArray* object, std::size_t index, const char* name) {
    hos::ObjectInterface element = omGetArrayElement(object, index);
    if (element && name) return element;
    const std::string property = "property \"" + std::string(name ? name : "") + "\"";
    const orvex::Objects* objects = orvex::objectsOf(object);
    if (!objects)
        orvex::raise("NoObject", orvex::describeValue(object) + " is not an object and has no " + property + ".");
    orvex::raise("IndexOutOfRange", "There is no object at index " + std::to_string(index) + " of " +
                                        std::to_string(objects->size()) + " to ask for the " + property + ".");
}

HvArrayPtr readProperty(const hvArray* object, std::size_t index, const char* name) {
    const orvex::faults::Outcome outcome = orvex::faults::point(Operation::readProperty);
    if (outcome != orvex::faults::Outcome::proceed) return orvex::faults::substitute(outcome);
    HvArrayPtr value = requireElement(object, index, name)->getProperty(name);
    orvex::handOut(value.get());
    return value;
}

}  // namespace

namespace hos {

COSObject::COSObject(const orvex::Site& site) : LedgerEntry(orvex::LedgerKind::object, site) {
    orvex::faults::point(Operation::createObject);
}

COSObject::~COSObject() = default;

void* getNativeInstance(const ObjectInterface& object, InternedName fullClassName) noexcept {
    return object && !fullClassName.isEmpty() ? object->nativeInstance(*fullClassName.text()) : nullptr;
}

}  // namespace hos

hos::ObjectInterface omGetArrayElement(const hvArray* objectArray, std::size_t index) noexcept {
    const orvex::Objects* objects = orvex::objectsOf(objectArray);
    return objects && index < objects->size() ? (*objects)[index] : nullptr;
}

hvArray* omCreateHOSScalar(const hos::ObjectInterface& object) {
    if (!object) orvex::raise("NoObject", "There is no object to make a value of.");
    return orvex::makeObjectArray(orvex::Dimensions(1, 1), {object}, "omCreateHOSScalar").release();
}

hvArray* hvGetProperty(const hvArray* object, std::size_t index, const char* name) {
    return readProperty(object, index, name).release();
}

hvArray* hvGetPropertyShared(const hvArray* object, std::size_t index, const char* name) {
    return readProperty(object, index, name).release();
}

void hvSetProperty(hvArray* object, std::size_t index, const char* name, const hvArray* value) {
    orvex::faults::point(Operation::writeProperty);
    const hos::ObjectInterface element = requireElement(object, index, name);
    if (!value) orvex::raise("NoValue", "There is no value to assign to the property \"" + std::string(name) + "\".");
    element->setProperty(name, value);
}

namespace orvex {

std::string internal::describeObjectOf(const LedgerEntry& entry) {
    return static_cast<const hos::COSObject&>(entry).className();
}

std::string displayObject(const hvArray* object) {
    std::string text = describeValue(object);
    const hos::ObjectInterface element = omGetArrayElement(object, 0);
    if (!element || hvGetNumberOfElements(object) != 1) return text;
    text = element->className();
    for (const std::string& name : element->displayedProperties())
        text += "\n  " + name + ": " + shortText(element->getProperty(name).get());
    return text;
}

}  // namespace orvex
