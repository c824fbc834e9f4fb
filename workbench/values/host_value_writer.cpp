#include "workbench/values/host_value_writer.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <type_traits>
#include <vector>

#include "memory_host/orvex/values/element_type.h"
#include "workbench/json/json_text.h"
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

/// What an element is read as, so that a number of 64 bits holds it: floats and truths by their bits.
template <typename T>
using ReadAs = std::conditional_t<std::is_same_v<T, double>, std::uint64_t,
                                  std::conditional_t<std::is_same_v<T, float>, std::uint32_t,
                                                     std::conditional_t<std::is_same_v<T, bool>, std::uint8_t, T>>>;

template <typename T>
std::uint64_t widened(const hvArray* value, std::size_t index) {
    T element{};
    std::memcpy(&element, static_cast<const char*>(hvGetData(value)) + index * sizeof(T), sizeof(T));
    return static_cast<std::uint64_t>(element);
}

std::uint64_t bitsAt(const hvArray* value, std::size_t index) {
    const hvClassID classId = hvGetClassID(value);
    if (classId == hvCHAR_CLASS) return widened<char16_t>(value, index);
    std::uint64_t bits = 0;
    orvex::withElementType(classId,
                           [&]<typename T>(std::type_identity<T>) { bits = widened<ReadAs<T>>(value, index); });
    return bits;
}

/// Whether the value's plain JSON form says everything about it.
bool isPlain(const hvArray* value) {
    switch (hvGetClassID(value)) {
        case hvDOUBLE_CLASS:
            return hasSize(value, 1, 1) && std::isfinite(*hvGetDoubles(value));
        case hvLOGICAL_CLASS:
            return hasSize(value, 1, 1);
        case hvCHAR_CLASS:
            return hasSize(value, 1, hvGetNumberOfElements(value)) && isWellFormed(charsOf(value));
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
    out += '{';
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (i > 0) out += ", ";
        appendJsonText(out, std::string_view(names[i]));
        out += ": ";
        appendJsonValue(out, hvGetField(value, 0, names[i]));
    }
    out += '}';
}

void appendCells(std::string& out, const hvArray* value) {
    appendJsonList(out, hvGetNumberOfElements(value),
                   [&](std::size_t i) { appendJsonValue(out, hvGetCell(value, i)); });
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

void appendStructArray(std::string& out, const hvArray* value) {
    const std::vector<const char*> names = fieldNames(value);
    out += R"(, "fields": )";
    appendJsonList(out, names.size(), [&](std::size_t i) { appendJsonText(out, std::string_view(names[i])); });
    out += R"(, "data": )";
    appendJsonList(out, names.size() * hvGetNumberOfElements(value), [&](std::size_t i) {
        appendJsonValue(out, hvGetField(value, i / names.size(), names[i % names.size()]));
    });
}

void appendTagged(std::string& out, const hvArray* value) {
    const hvClassID classId = hvGetClassID(value);
    if (classOfName(nameOfClass(classId)) == hvUNKNOWN_CLASS)
        throw Error(std::string("a value of class ") + hvGetClassName(value) + " cannot be saved in a model file");
    out += fmt::format(R"({{"$class": "{}", "size": )", nameOfClass(classId));
    appendJsonList(out, hvGetNumberOfDimensions(value),
                   [&](std::size_t i) { out += std::to_string(hvGetDimensions(value)[i]); });
    if (classId == hvSTRUCT_CLASS) {
        appendStructArray(out, value);
    } else {
        out += R"(, "data": )";
        if (classId == hvCELL_CLASS)
            appendCells(out, value);
        else if (classId == hvCHAR_CLASS && isWellFormed(charsOf(value)))
            appendJsonText(out, charsOf(value));
        else
            appendJsonList(out, hvGetNumberOfElements(value),
                           [&](std::size_t i) { out += textOfElement(classId, bitsAt(value, i)); });
    }
    out += '}';
}

}  // namespace

void appendJsonValue(std::string& out, const hvArray* value) {
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
