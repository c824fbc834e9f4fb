#include "workbench/model_file/field_kinds.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>

#include "memory_host/orvex/values/values.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

using Plain = FieldKind::Plain;

constexpr std::int32_t kMost = std::numeric_limits<std::int32_t>::max();

bool isText(const hvArray* value) {
    return hvGetClassID(value) == hvCHAR_CLASS && hvGetNumberOfDimensions(value) == 2 && hvGetDimensions(value)[0] == 1;
}

bool isTextWithoutNul(const hvArray* value) {
    return isText(value) && matrix::get_ustring(value).find(u'\0') == std::u16string::npos;
}

bool isListOfTexts(const hvArray* value) {
    if (hvGetClassID(value) != hvCELL_CLASS) return false;
    for (std::size_t i = 0; i < hvGetNumberOfElements(value); ++i)
        if (!isText(hvGetCell(value, i))) return false;
    return true;
}

// The name of the first such field of a 1x1 struct, or null.
const char* firstOtherThanText(const hvArray* value) {
    for (int i = 0; i < hvGetNumberOfFields(value); ++i) {
        const char* const name = hvGetFieldNameByNumber(value, i);
        if (!isText(hvGetField(value, 0, name))) return name;
    }
    return nullptr;
}

bool isStructOfTexts(const hvArray* value) {
    return hvGetClassID(value) == hvSTRUCT_CLASS && hvGetNumberOfElements(value) == 1 && !firstOtherThanText(value);
}

bool isNumber(const hvArray* value) {
    const hvClassID classId = hvGetClassID(value);
    const bool isNumeric = classId == hvDOUBLE_CLASS || (classId >= hvSINGLE_CLASS && classId <= hvUINT64_CLASS);
    return isNumeric && hvGetNumberOfElements(value) == 1;
}

bool isWholeWithin(const hvArray* value, double least, double most) {
    if (!isNumber(value)) return false;
    const double number = hvGetScalar(value);
    return number >= least && number <= most && number == std::floor(number);
}

bool isCount(const hvArray* value) { return isWholeWithin(value, 0.0, std::numeric_limits<std::uint32_t>::max()); }

template <int kLeast>
bool isWhole(const hvArray* value) {
    return isWholeWithin(value, kLeast, kMost);
}

bool isTruth(const hvArray* value) {
    const bool isLogical = hvGetClassID(value) == hvLOGICAL_CLASS && hvGetNumberOfElements(value) == 1;
    return isLogical || isWholeWithin(value, 0.0, 1.0);
}

constexpr FieldKind kAny{"a value", [](const hvArray*) { return true; }};
constexpr FieldKind kText{"a text in one row", isText, Plain::text};
constexpr FieldKind kTextWithoutNul{"a text without NUL characters", isTextWithoutNul};
constexpr FieldKind kListOfTexts{"an array of texts", isListOfTexts};
constexpr FieldKind kStructOfTexts{"an object of texts", isStructOfTexts, Plain::fields};
constexpr FieldKind kCount{"a whole number from 0 to 4294967295", isCount};
constexpr FieldKind kWhole{"a whole number from -2147483648 to 2147483647",
                           isWhole<std::numeric_limits<std::int32_t>::min()>, Plain::number, 0, kMost};
constexpr FieldKind kFromOne{"a whole number from 1 to 2147483647", isWhole<1>, Plain::number, 1, kMost};
constexpr FieldKind kTruth{"true or false, or 1 or 0,", isTruth, Plain::number, 0, 1};

}  // namespace

const FieldKind& fieldKindOf(std::string_view field) {
    static constexpr std::array<std::pair<std::string_view, const FieldKind*>, 25> kKinds{{
        {"UUID", &kText},
        {"BlockPath_", &kText},
        {"EID_", &kText},
        {"SubPath_", &kText},
        {"OutputPortIndex_", &kWhole},
        {"LogicalPortIndex_", &kWhole},
        {"SignalName_", &kText},
        {"SubSysPath_", &kText},
        {"Decimation_", &kFromOne},
        {"MaxPoints_", &kWhole},
        {"TargetBufferedStreaming_", &kTruth},
        {"IsFrameBased_", &kTruth},
        {"HideInPLV_", &kTruth},
        {"DomainType_", &kText},
        {"DomainParams_", &kStructOfTexts},
        {"VisualType_", &kText},
        {"ModelPath_", &kListOfTexts},
        {"ModelPathEID_", &kListOfTexts},
        {"SourceModel_", &kText},
        {"SignalUUID_", &kText},
        {"ObserverType_", &kText},
        {"UpdateRate_", &kCount},
        {"DimensionChannel_", &kCount},
        {"ObserveImaginaryPart_", &kTruth},
        {"BusLeafPath_", &kTextWithoutNul},
    }};
    const auto* const found =
        std::find_if(kKinds.begin(), kKinds.end(), [&](const auto& entry) { return entry.first == field; });
    return found == kKinds.end() ? kAny : *found->second;
}

const FieldKind& markedNameKind() noexcept { return kText; }

std::string describeFieldValue(const hvArray* value, const FieldKind& wanted) {
    if (isNumber(value)) return fmt::format("the number {}", hvGetScalar(value));
    if (isText(value)) return "the text " + inQuotes(matrix::get_ustring(value));
    if (hvGetClassID(value) == hvCELL_CLASS)
        return &wanted == &kListOfTexts ? "an array with something else in it" : "an array";
    if (hvGetClassID(value) != hvSTRUCT_CLASS || hvGetNumberOfElements(value) != 1) return orvex::describeValue(value);
    if (&wanted == &kStructOfTexts)
        if (const char* const name = firstOtherThanText(value))
            return fmt::format("an object whose {} is no text", inQuotes(std::string_view(name)));
    return "an object";
}

}  // namespace workbench
