#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "memory_host/orvex/account/faults.h"
#include "memory_host/orvex/calls/errors.h"
#include "memory_host/orvex/values/element_type.h"
#include "memory_host/orvex/values/hv_array_impl.h"
#include "memory_host/orvex/values/utf.h"

namespace orvex {

HvArrayPtr makeObjectArray(Dimensions dimensions, Objects objects, const Site& site) {
    faults::point(faults::Operation::createValue);
    if (objects.size() != dimensions.elements())
        raise("InvalidDimensions", "An object array of " + dimensions.text() + " cannot hold " +
                                       std::to_string(objects.size()) + " objects.");
    return makeValue(hvOBJECT_CLASS, std::move(dimensions), std::move(objects), site);
}

HvArrayPtr makeObjectColumn(Objects objects, const Site& site) {
    const std::size_t rows = objects.size();
    return makeObjectArray(Dimensions(rows, 1), std::move(objects), site);
}

HvArrayPtr makeEmpty(const Site& site) { return makeValue(hvDOUBLE_CLASS, Dimensions(0, 0), Elements(0), site); }

namespace {

std::size_t elementSize(hvClassID classId) {
    std::size_t bytes = classId == hvCHAR_CLASS ? sizeof(char16_t) : 0;
    withElementType(classId, [&]<class Stored>(std::type_identity<Stored>) { bytes = sizeof(Stored); });
    if (bytes == 0) raise("WrongClass", "Class " + std::to_string(classId) + " is not a numeric class.");
    return bytes;
}

hvArray* createNumeric(Dimensions dimensions, hvClassID classId, hvComplexity complexity, const Site& site) {
    faults::point(faults::Operation::createValue);
    if (complexity != hvREAL) raise("InvalidArgument", "Only real values can be created.");
    Elements zeros(dimensions.elements() * elementSize(classId));
    return makeValue(classId, std::move(dimensions), std::move(zeros), site).release();
}

hvArray* createText(Elements units, std::size_t length, const Site& site) {
    return makeValue(hvCHAR_CLASS, Dimensions(1, length), std::move(units), site).release();
}

hvArray* createText(std::u16string_view text, const Site& site) {
    Elements units = Elements::unwritten(text.size() * sizeof(char16_t));
    std::copy(text.begin(), text.end(), static_cast<char16_t*>(units.dataForWriting()));
    return createText(std::move(units), text.size(), site);
}

// Mostly ASCII, of which each byte is a unit: found out on the way.
hvArray* createTextOfUtf8(std::string_view text, const Site& site) {
    Elements units = Elements::unwritten(text.size() * sizeof(char16_t));
    auto* to = static_cast<char16_t*>(units.dataForWriting());
    unsigned char all = 0;
    for (const char byte : text) {
        all = static_cast<unsigned char>(all | static_cast<unsigned char>(byte));
        *to++ = static_cast<unsigned char>(byte);
    }
    return all < 0x80 ? createText(std::move(units), text.size(), site) : createText(utf16Of(text), site);
}

template <class T>
hvArray* createScalar(hvClassID classId, T value, const Site& site) {
    faults::point(faults::Operation::createValue);
    return makeValue(classId, Dimensions(1, 1), Elements::of(value), site).release();
}

// How many values `fields` fields take: as far as memory goes, they are one dimension more.
std::size_t fieldValues(const Dimensions& dimensions, std::size_t fields) {
    const std::size_t elements = dimensions.elements();
    if (elements != 0 && fields > kMostElements / elements) {
        std::vector<std::size_t> all(dimensions.lengths().begin(), dimensions.lengths().end());
        all.push_back(fields);
        return Dimensions(all).elements();
    }
    return elements * fields;
}

hvArray* createStruct(std::span<const std::size_t> dims, std::span<const char* const> names, const Site& site) {
    faults::point(faults::Operation::createValue);
    Dimensions dimensions(dims);
    Children values(fieldValues(dimensions, names.size()));
    return makeValue(hvSTRUCT_CLASS, std::move(dimensions), StructData{FieldNames::of(names), std::move(values)}, site)
        .release();
}

void requirePresent(const void* pointer, std::size_t count, const char* what) {
    if (!pointer && count > 0) raise("InvalidArgument", std::string("The ") + what + " is missing (null).");
}

std::span<const std::size_t> dimensionList(std::size_t ndim, const std::size_t* dims) {
    requirePresent(dims, ndim, "list of dimensions");
    return {dims, ndim};
}

}  // namespace
}  // namespace orvex

using orvex::Dimensions;
using orvex::faults::Operation;

hvArray* hvCreateStructArray(std::size_t ndim, const std::size_t* dims, int nfields, const char* const* fieldNames) {
    if (nfields < 0) orvex::raise("InvalidArgument", "A struct cannot have " + std::to_string(nfields) + " fields.");
    const auto fields = static_cast<std::size_t>(nfields);
    orvex::requirePresent(fieldNames, fields, "list of field names");
    return orvex::createStruct(orvex::dimensionList(ndim, dims), {fieldNames, fields}, "hvCreateStructArray");
}

hvArray* hvCreateString(const char* text) {
    orvex::faults::point(Operation::createValue);
    orvex::requirePresent(text, 1, "text");
    return orvex::createTextOfUtf8(text, "hvCreateString");
}

hvArray* hvCreateDoubleScalar(double value) {
    return orvex::createScalar(hvDOUBLE_CLASS, value, "hvCreateDoubleScalar");
}

hvArray* hvCreateLogicalScalar(bool value) {
    return orvex::createScalar(hvLOGICAL_CLASS, value, "hvCreateLogicalScalar");
}

hvArray* hvCreateNumericScalar(hvClassID classID, hvComplexity complexity) {
    return orvex::createNumeric(Dimensions(1, 1), classID, complexity, "hvCreateNumericScalar");
}

hvArray* hvCreateNumericMatrix(std::size_t m, std::size_t n, hvClassID classID, hvComplexity complexity) {
    const std::array dims{m, n};
    return orvex::createNumeric(Dimensions(dims), classID, complexity, "hvCreateNumericMatrix");
}

hvArray* hvCreateCellArray(std::size_t ndim, const std::size_t* dims) {
    orvex::faults::point(Operation::createValue);
    Dimensions dimensions(orvex::dimensionList(ndim, dims));
    const std::size_t cells = dimensions.elements();
    return orvex::makeValue(hvCELL_CLASS, std::move(dimensions), orvex::CellData{orvex::Children(cells)},
                            "hvCreateCellArray")
        .release();
}

namespace matrix {

hvArray* create_struct(std::span<const std::size_t> dims, std::span<const char* const> fieldNames) {
    return orvex::createStruct(dims, fieldNames, "matrix::create_struct");
}

hvArray* create(const char* text, std::size_t length) {
    orvex::faults::point(Operation::createValue);
    orvex::requirePresent(text, length, "text");
    return orvex::createTextOfUtf8({text, length}, "matrix::create");
}

hvArray* create(const char16_t* text, std::size_t length) {
    orvex::faults::point(Operation::createValue);
    orvex::requirePresent(text, length, "text");
    return orvex::createText(std::u16string_view(text, length), "matrix::create");
}

hvArray* create_numeric(std::span<const std::size_t> dims, hvClassID classID, hvComplexity complexity) {
    return orvex::createNumeric(Dimensions(dims), classID, complexity, "matrix::create_numeric");
}

}  // namespace matrix
