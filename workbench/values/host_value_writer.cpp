#include "workbench/values/host_value_writer.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <span>
#include <type_traits>
#include <vector>

#include "host/unicode.h"
#include "host/values.h"
#include "memory_host/orvex/values/element_type.h"
#include "workbench/json/json_object.h"
#include "workbench/json/plain_text.h"
#include "workbench/text/error.h"
#include "workbench/text/text.h"
#include "workbench/values/class_names.h"
#include "workbench/values/number_text.h"

namespace workbench {

namespace {

bool hasSize(const hvArray* value, std::size_t rows, std::size_t columns) {
    const std::size_t* const lengths = hvGetDimensions(value);
    return hvGetNumberOfDimensions(value) == 2 && lengths[0] == rows && lengths[1] == columns;
}

bool isColumn(const hvArray* value) { return hvGetNumberOfDimensions(value) == 2 && hvGetDimensions(value)[1] == 1; }

std::u16string_view charsOf(const hvArray* value) { return {hvGetChars(value), hvGetNumberOfElements(value)}; }

std::vector<const char*> fieldNames(const hvArray* value) {
    std::vector<const char*> names;
    names.reserve(static_cast<std::size_t>(hvGetNumberOfFields(value)));
    for (int i = 0; i < hvGetNumberOfFields(value); ++i) names.push_back(hvGetFieldNameByNumber(value, i));
    return names;
}

// What an element is read as, so that a number of 64 bits holds it: floats and truths by their bits.
template <class T>
using ReadAs = std::conditional_t<std::is_same_v<T, double>, std::uint64_t,
                                  std::conditional_t<std::is_same_v<T, float>, std::uint32_t,
                                                     std::conditional_t<std::is_same_v<T, bool>, std::uint8_t, T>>>;

template <class T>
std::uint64_t widened(const hvArray* value, std::size_t index) {
    T element{};
    std::memcpy(&element, static_cast<const char*>(hvGetData(value)) + index * sizeof(T), sizeof(T));
    return static_cast<std::uint64_t>(element);
}

std::uint64_t bitsAt(const hvArray* value, std::size_t index) {
    const hvClassID classId = hvGetClassID(value);
    if (classId == hvCHAR_CLASS) return widened<char16_t>(value, index);
    std::uint64_t bits = 0;
    orvex::withElementType(classId, [&]<class T>(std::type_identity<T>) { bits = widened<ReadAs<T>>(value, index); });
    return bits;
}

// Whether the value's plain JSON form says everything about it.
bool isPlain(const hvArray* value) {
    switch (hvGetClassID(value)) {
        case hvDOUBLE_CLASS:
            return hasSize(value, 1, 1) && std::isfinite(*hvGetDoubles(value));
        case hvLOGICAL_CLASS:
            return hasSize(value, 1, 1);
        case hvCHAR_CLASS:
            return hasSize(value, 1, hvGetNumberOfElements(value)) && ks_host::isWellFormed(charsOf(value));
        case hvCELL_CLASS:
            return isColumn(value);
        case hvSTRUCT_CLASS:
            return hasSize(value, 1, 1) &&
                   (hvGetNumberOfFields(value) == 0 || *hvGetFieldNameByNumber(value, 0) != '$');
        default:
            return false;
    }
}

void appendFields(std::string& out, const hvArray* value, const std::vector<const char*>& names) {
    JsonObject object(out);
    for (const char* const name : names) {
        object.name(name);
        appendJsonValue(out, hvGetField(value, 0, name));
    }
    object.close();
}

void appendCells(std::string& out, const hvArray* value) {
    appendJsonArray(out, ks_host::cellsOf(value), [&](const hvArray* cell) { appendJsonValue(out, cell); });
}

void appendNames(std::string& out, const std::vector<const char*>& names) {
    appendJsonArray(out, names, [&](const char* name) { appendJsonText(out, std::string_view(name)); });
}

// Whole numbers of one digit, flags and ports mostly.
bool appendSmallNumber(std::string& out, double value) {
    if (!(value >= 0 && value <= 9) || std::signbit(value) || value != std::trunc(value)) return false;
    out += static_cast<char>('0' + static_cast<int>(value));
    return true;
}

void appendPlain(std::string& out, const hvArray* value) {
    switch (hvGetClassID(value)) {
        case hvDOUBLE_CLASS:
            out += textOfNumber(*hvGetDoubles(value));
            break;
        case hvCHAR_CLASS:
            appendJsonText(out, charsOf(value));
            break;
        case hvCELL_CLASS:
            appendCells(out, value);
            break;
        case hvSTRUCT_CLASS:
            appendFields(out, value, fieldNames(value));
            break;
        default:
            out += textOfElement(hvGetClassID(value), bitsAt(value, 0));
    }
}

// What most values are.
bool appendUsual(std::string& out, const hvArray* value) {
    const hvClassID classId = hvGetClassID(value);
    if (classId == hvDOUBLE_CLASS)
        return hvGetNumberOfElements(value) == 1 &&
               appendSmallNumber(out, *static_cast<const double*>(hvGetData(value)));
    const bool isRow = classId == hvCHAR_CLASS && hvGetNumberOfDimensions(value) == 2 && *hvGetDimensions(value) == 1;
    return isRow && appendPlainJsonText(out, charsOf(value));
}

void appendStructs(std::string& out, const hvArray* value, const std::vector<const char*>& names) {
    JsonArray array(out);
    for (const std::size_t element : ks_host::indicesOf(value))
        for (const char* const name : names) {
            array.next();
            appendJsonValue(out, hvGetField(value, element, name));
        }
    array.close();
}

void appendElements(std::string& out, const hvArray* value) {
    const hvClassID classId = hvGetClassID(value);
    if (classId == hvCELL_CLASS) return appendCells(out, value);
    if (classId == hvCHAR_CLASS && ks_host::isWellFormed(charsOf(value))) return appendJsonText(out, charsOf(value));
    appendJsonArray(out, ks_host::indicesOf(value),
                    [&](std::size_t i) { out += textOfElement(classId, bitsAt(value, i)); });
}

void appendTagged(std::string& out, const hvArray* value) {
    const hvClassID classId = hvGetClassID(value);
    if (classOfName(nameOfClass(classId)) == hvUNKNOWN_CLASS)
        throw Error(fmt::format("a value of class {} cannot be saved in a model file", hvGetClassName(value)));
    JsonObject object(out);
    object.text("$class", std::string_view(nameOfClass(classId))).name("size");
    const std::span lengths(hvGetDimensions(value), hvGetNumberOfDimensions(value));
    appendJsonArray(out, lengths, [&](std::size_t length) { out += fmt::format("{}", length); });
    const bool isStruct = classId == hvSTRUCT_CLASS;
    const std::vector<const char*> names = isStruct ? fieldNames(value) : std::vector<const char*>();
    if (isStruct) {
        object.name("fields");
        appendNames(out, names);
    }
    object.name("data");
    isStruct ? appendStructs(out, value, names) : appendElements(out, value);
    object.close();
}

}  // namespace

void appendJsonValue(std::string& out, const hvArray* value) {
    if (appendUsual(out, value)) return;
    if (!value)
        out += "null";
    else if (isPlain(value))
        appendPlain(out, value);
    else
        appendTagged(out, value);
}

void appendJsonFieldsSorted(std::string& out, const hvArray* value) {
    if (hvGetClassID(value) != hvSTRUCT_CLASS || !isPlain(value)) return appendJsonValue(out, value);
    std::vector<const char*> names = fieldNames(value);
    std::sort(names.begin(), names.end(), [](const char* a, const char* b) { return std::strcmp(a, b) < 0; });
    const bool wouldReadAsTagged = !names.empty() && *names.front() == '$';
    if (wouldReadAsTagged) return appendJsonValue(out, value);
    appendFields(out, value, names);
}

}  // namespace workbench
