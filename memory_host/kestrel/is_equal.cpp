#include <algorithm>
#include <cstddef>
#include <string>
#include <type_traits>

#include "memory_host/kestrel/host_definitions.h"
#include "memory_host/kestrel/host_values.h"
#include "memory_host/orvex/calls/errors.h"
#include "memory_host/orvex/calls/functions.h"
#include "memory_host/orvex/objects/objects.h"
#include "memory_host/orvex/values/element_type.h"
#include "memory_host/orvex/values/hv_array_impl.h"

// "isequal": whether values are the same, as a script author sees it.
namespace kestrel {

namespace {

bool areEqual(const hvArray* left, const hvArray* right);

bool haveSameSize(const hvArray* left, const hvArray* right) {
    const std::size_t count = hvGetNumberOfDimensions(left);
    return count == hvGetNumberOfDimensions(right) &&
           std::equal(hvGetDimensions(left), hvGetDimensions(left) + count, hvGetDimensions(right));
}

// Wide enough for every number that the host knows.
long double numberAt(const hvArray* value, std::size_t index) {
    long double number = 0;
    orvex::withElementType(hvGetClassID(value), [&]<class Stored>(std::type_identity<Stored>) {
        number = static_cast<long double>(static_cast<const Stored*>(hvGetData(value))[index]);
    });
    return number;
}

bool isNumeric(const hvArray* value) {
    return orvex::withElementType(hvGetClassID(value), [](auto) {});
}

// What holds nothing reads as a 0x0 double.
bool readsAsNothing(const hvArray* value) {
    return !value || (isNumeric(value) && hvGetNumberOfDimensions(value) == 2 && hvGetDimensions(value)[0] == 0 &&
                      hvGetDimensions(value)[1] == 0);
}

bool areNumbersEqual(const hvArray* left, const hvArray* right) {
    const std::size_t count = hvGetNumberOfElements(left);
    for (std::size_t i = 0; i < count; ++i)
        if (!(numberAt(left, i) == numberAt(right, i))) return false;
    return true;
}

bool areCellsEqual(const hvArray* left, const hvArray* right) {
    const std::size_t count = hvGetNumberOfElements(left);
    for (std::size_t i = 0; i < count; ++i)
        if (!areEqual(hvGetCell(left, i), hvGetCell(right, i))) return false;
    return true;
}

bool hasField(const hvArray* value, const char* name) {
    const auto* data = orvex::payloadOf<orvex::StructData>(value);
    return data && data->fieldNumber(name) >= 0;
}

bool areStructsEqual(const hvArray* left, const hvArray* right) {
    const int fields = hvGetNumberOfFields(left);
    if (fields != hvGetNumberOfFields(right)) return false;
    const std::size_t count = hvGetNumberOfElements(left);
    for (int number = 0; number < fields; ++number) {
        const char* name = hvGetFieldNameByNumber(left, number);
        if (!hasField(right, name)) return false;
        for (std::size_t i = 0; i < count; ++i)
            if (!areEqual(hvGetField(left, i, name), hvGetField(right, i, name))) return false;
    }
    return true;
}

bool areObjectsEqual(const hos::ObjectInterface& left, const hos::ObjectInterface& right) {
    if (left == right) return true;
    if (!left || !right || left->className() != right->className()) return false;
    const std::vector<std::string> names = left->propertyNames();
    return std::all_of(names.begin(), names.end(), [&](const std::string& name) {
        return areEqual(left->getProperty(name).get(), right->getProperty(name).get());
    });
}

bool areObjectArraysEqual(const hvArray* left, const hvArray* right) {
    const orvex::Objects& ours = *orvex::objectsOf(left);
    const orvex::Objects& theirs = *orvex::objectsOf(right);
    return std::equal(ours.begin(), ours.end(), theirs.begin(), theirs.end(), areObjectsEqual);
}

bool areEqual(const hvArray* left, const hvArray* right) {
    if (!left || !right) return readsAsNothing(left) && readsAsNothing(right);
    if (!haveSameSize(left, right)) return false;
    if (isNumeric(left) && isNumeric(right)) return areNumbersEqual(left, right);
    if (hvGetClassID(left) != hvGetClassID(right)) return false;
    switch (hvGetClassID(left)) {
        case hvSTRUCT_CLASS:
            return areStructsEqual(left, right);
        case hvCELL_CLASS:
            return areCellsEqual(left, right);
        case hvOBJECT_CLASS:
            return areObjectArraysEqual(left, right);
        default:
            return matrix::get_ustring(left) == matrix::get_ustring(right);
    }
}

void isEqual(orvex::Call& call) {
    if (call.ins.size() < 2) orvex::raise("TooFewInputs", "\"isequal\" needs at least two values to compare.");
    const auto equalsFirst = [&](const hvArray* other) { return areEqual(call.ins.front(), other); };
    call.outs[0] = makeLogical(std::all_of(call.ins.begin() + 1, call.ins.end(), equalsFirst));
}

}  // namespace

void defineIsEqual() { orvex::defineFunction("isequal", isEqual, 1); }

}  // namespace kestrel
