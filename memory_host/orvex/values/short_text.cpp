#include "memory_host/orvex/values/short_text.h"

#include <charconv>

#include "memory_host/orvex/values/values.h"

namespace orvex {

namespace {

std::string numberText(double number) {
    char digits[32];
    return {digits, std::to_chars(digits, digits + sizeof digits, number).ptr};
}

}  // namespace

std::string shortText(const hvArray* value) {
    const bool isRow = hvGetNumberOfDimensions(value) == 2 && hvGetDimensions(value)[0] <= 1;
    if (hvGetClassID(value) == hvCHAR_CLASS && (isRow || hvIsEmpty(value)))
        return "'" + hvArrayToStdString(value) + "'";
    if (hvGetNumberOfElements(value) != 1) return describeValue(value);
    if (const bool* truth = hvGetLogicals(value)) return *truth ? "true" : "false";
    const hvClassID classId = hvGetClassID(value);
    if (classId == hvDOUBLE_CLASS || classId == hvSINGLE_CLASS) return numberText(hvGetScalar(value));
    if (classId >= hvINT8_CLASS && classId <= hvINT64_CLASS) return std::to_string(hvGetScalarInt(value));
    return describeValue(value);
}

}  // namespace orvex
