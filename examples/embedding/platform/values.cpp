#include <algorithm>
#include <boost/nowide/utf/convert.hpp>
#include <cstring>
#include <functional>
#include <numeric>

#include "host/text.h"
#include "platform/platform.h"
#include "platform/value.h"

// Values: what host/hv_array.h and host/text.h declare and the library calls.

namespace {

using smallest_platform::make;
using smallest_platform::raise;

std::size_t widthOf(hvClassID classID) noexcept {
    switch (classID) {
        case hvDOUBLE_CLASS:
        case hvINT64_CLASS:
        case hvUINT64_CLASS:
            return 8;
        case hvSINGLE_CLASS:
        case hvINT32_CLASS:
        case hvUINT32_CLASS:
            return 4;
        case hvCHAR_CLASS:
        case hvINT16_CLASS:
        case hvUINT16_CLASS:
            return 2;
        case hvLOGICAL_CLASS:
        case hvINT8_CLASS:
        case hvUINT8_CLASS:
            return 1;
        default:
            return 0;
    }
}

std::size_t countOf(const hvArray& value) noexcept {
    return std::accumulate(value.dimensions.begin(), value.dimensions.end(), std::size_t{1}, std::multiplies<>());
}

// A single length N means N x 1.
std::vector<std::size_t> dimensionsFrom(std::span<const std::size_t> dims) {
    std::vector<std::size_t> dimensions(dims.begin(), dims.end());
    if (dimensions.size() < 2) dimensions.push_back(1);
    return dimensions;
}

HvArrayPtr makeStruct(std::span<const std::size_t> dims, std::span<const char* const> names) {
    HvArrayPtr value = make(hvSTRUCT_CLASS, dimensionsFrom(dims));
    value->fieldNames.assign(names.begin(), names.end());
    value->items.resize(countOf(*value) * names.size());
    return value;
}

HvArrayPtr makeChars(std::u16string_view text) {
    HvArrayPtr value = make(hvCHAR_CLASS, {1, text.size()});
    if (!text.empty()) std::memcpy(value->bytes.data(), text.data(), text.size() * sizeof(char16_t));
    return value;
}

std::ptrdiff_t slotOf(const hvArray* value, std::size_t index, std::string_view name) noexcept {
    if (value == nullptr || value->classID != hvSTRUCT_CLASS || index >= countOf(*value)) return -1;
    const auto field = std::ranges::find(value->fieldNames, name);
    if (field == value->fieldNames.end()) return -1;
    return static_cast<std::ptrdiff_t>(index * value->fieldNames.size()) + (field - value->fieldNames.begin());
}

HvArrayPtr copyOf(const hvArray* value) {
    if (value == nullptr) return nullptr;
    HvArrayPtr copy(new hvArray);
    copy->classID = value->classID;
    copy->dimensions = value->dimensions;
    copy->bytes = value->bytes;
    copy->fieldNames = value->fieldNames;
    copy->object = value->object;
    for (const HvArrayPtr& item : value->items) copy->items.push_back(copyOf(item.get()));
    return copy;
}

template <class Number>
double firstAs(const hvArray* value) noexcept {
    Number number;
    std::memcpy(&number, value->bytes.data(), sizeof number);
    return static_cast<double>(number);
}

}  // namespace

HvArrayPtr smallest_platform::make(hvClassID classID, std::vector<std::size_t> dimensions) {
    HvArrayPtr value(new hvArray);
    value->classID = classID;
    value->dimensions = std::move(dimensions);
    value->bytes.resize((countOf(*value) * widthOf(classID) + 7) / 8);
    return value;
}

void THvArrayDeleter::destroy(hvArray* value) noexcept {
    smallest_platform::leaveLocalScope(value);
    delete value;
}
void THvArrayDeleter::operator()(hvArray* value) const noexcept { destroy(value); }
void matrix::destroyArray(hvArray* value) noexcept { THvArrayDeleter::destroy(value); }

// ---- creating ----

hvArray* hvCreateStructArray(std::size_t ndim, const std::size_t* dims, int nfields, const char* const* fieldNames) {
    return makeStruct({dims, ndim}, {fieldNames, static_cast<std::size_t>(nfields)}).release();
}
hvArray* hvCreateString(const char* text) { return makeChars(fl::i18n::to_ustring(text)).release(); }
hvArray* hvCreateDoubleScalar(double value) {
    HvArrayPtr made = make(hvDOUBLE_CLASS, {1, 1});
    std::memcpy(made->bytes.data(), &value, sizeof value);
    return made.release();
}
hvArray* hvCreateLogicalScalar(bool value) {
    HvArrayPtr made = make(hvLOGICAL_CLASS, {1, 1});
    std::memcpy(made->bytes.data(), &value, sizeof value);
    return made.release();
}
hvArray* hvCreateNumericScalar(hvClassID classID, hvComplexity) { return make(classID, {1, 1}).release(); }
hvArray* hvCreateNumericMatrix(std::size_t m, std::size_t n, hvClassID classID, hvComplexity) {
    return make(classID, {m, n}).release();
}
hvArray* hvCreateCellArray(std::size_t ndim, const std::size_t* dims) {
    HvArrayPtr made = make(hvCELL_CLASS, dimensionsFrom({dims, ndim}));
    made->items.resize(countOf(*made));
    return made.release();
}
hvArray* hvCreateDeepCopy(const hvArray* value) { return copyOf(value).release(); }
hvArray* hvCreateSharedDataCopy(const hvArray* value) { return copyOf(value).release(); }

namespace matrix {
hvArray* create_struct(std::span<const std::size_t> dims, std::span<const char* const> fieldNames) {
    return makeStruct(dims, fieldNames).release();
}
hvArray* create(const char* text, std::size_t length) {
    return makeChars(fl::i18n::to_ustring(std::string(text, length).c_str())).release();
}
hvArray* create(const char16_t* text, std::size_t length) { return makeChars({text, length}).release(); }
std::u16string get_ustring(const hvArray* value) {
    if (hvGetClassID(value) != hvCHAR_CLASS) raise("The value is no text.");
    std::u16string text(countOf(*value), u'\0');
    if (!text.empty()) std::memcpy(text.data(), value->bytes.data(), text.size() * sizeof(char16_t));
    return text;
}
}  // namespace matrix

// ---- reading ----

hvClassID hvGetClassID(const hvArray* value) noexcept { return value ? value->classID : hvUNKNOWN_CLASS; }
std::uint32_t hvGetClassWord(const hvArray* value) noexcept { return hvGetClassID(value); }
std::size_t hvGetNumberOfElements(const hvArray* value) noexcept { return value ? countOf(*value) : 0; }
bool hvIsEmpty(const hvArray* value) noexcept { return hvGetNumberOfElements(value) == 0; }
bool hvIsA(const hvArray* value, const char* className) noexcept {
    return value != nullptr && value->object != nullptr && value->object->className == className;
}
bool hvIsLogicalScalarTrue(const hvArray* value) noexcept {
    const bool* const logicals = hvGetLogicals(value);
    return logicals != nullptr && countOf(*value) == 1 && *logicals;
}
const hvArray* hvGetField(const hvArray* structArray, std::size_t index, const char* name) noexcept {
    const std::ptrdiff_t slot = slotOf(structArray, index, name);
    return slot < 0 ? nullptr : structArray->items[static_cast<std::size_t>(slot)].get();
}
int hvGetNumberOfFields(const hvArray* value) noexcept {
    return value ? static_cast<int>(value->fieldNames.size()) : 0;
}
const char* hvGetFieldNameByNumber(const hvArray* value, int fieldNumber) noexcept {
    if (fieldNumber < 0 || fieldNumber >= hvGetNumberOfFields(value)) return nullptr;
    return value->fieldNames[static_cast<std::size_t>(fieldNumber)].c_str();
}
const hvArray* hvGetCell(const hvArray* cellArray, std::size_t index) noexcept {
    if (hvGetClassID(cellArray) != hvCELL_CLASS || index >= cellArray->items.size()) return nullptr;
    return cellArray->items[index].get();
}
const void* hvGetData(const hvArray* value) noexcept {
    return value != nullptr && widthOf(value->classID) != 0 ? value->bytes.data() : nullptr;
}
const bool* hvGetLogicals(const hvArray* value) noexcept {
    return hvGetClassID(value) == hvLOGICAL_CLASS ? static_cast<const bool*>(hvGetData(value)) : nullptr;
}
std::string hvArrayToStdString(const hvArray* value) { return fl::i18n::to_string(matrix::get_ustring(value)); }
std::int64_t hvGetScalarInt(const hvArray* value) {
    if (hvIsEmpty(value)) raise("The value is empty.");
    double number = 0.0;
    switch (hvGetClassID(value)) {
        case hvDOUBLE_CLASS:
            number = firstAs<double>(value);
            break;
        case hvLOGICAL_CLASS:
            number = firstAs<bool>(value);
            break;
        case hvINT32_CLASS:
            number = firstAs<std::int32_t>(value);
            break;
        case hvUINT32_CLASS:
            number = firstAs<std::uint32_t>(value);
            break;
        default:
            raise("The value is no number that this platform converts.");
    }
    // 2^62 is far beyond every port and count.
    return number != number ? 0 : static_cast<std::int64_t>(std::clamp(number, -0x1p62, 0x1p62));
}

// ---- writing ----

void* hvGetDataForWriting(hvArray* value) { return const_cast<void*>(hvGetData(value)); }
void hvReplaceField(hvArray* structArray, std::size_t index, const char* name, hvArray* value) {
    HvArrayPtr owned(value);
    const std::ptrdiff_t slot = slotOf(structArray, index, name);
    if (slot < 0) raise(std::string("There is no field ") + name + ".");
    smallest_platform::leaveLocalScope(value);
    structArray->items[static_cast<std::size_t>(slot)] = std::move(owned);
}
void hvSetCell(hvArray* cellArray, std::size_t index, hvArray* value) {
    HvArrayPtr owned(value);
    if (hvGetClassID(cellArray) != hvCELL_CLASS || index >= cellArray->items.size()) raise("There is no such cell.");
    smallest_platform::leaveLocalScope(value);
    cellArray->items[index] = std::move(owned);
}
void hvSetArrayScope(hvArray* value, hvVariableScope) noexcept { smallest_platform::leaveLocalScope(value); }
void hvSetArrayScope(hvArray* value, std::nullptr_t) noexcept { smallest_platform::leaveLocalScope(value); }

// ---- texts ----

namespace fl::i18n {
std::u16string to_ustring(const char* text) {
    const std::string_view utf8 = text ? text : "";
    return boost::nowide::utf::convert_string<char16_t>(utf8.data(), utf8.data() + utf8.size());
}
std::string to_string(const std::u16string& text) {
    return boost::nowide::utf::convert_string<char>(text.data(), text.data() + text.size());
}
std::string to_string(const std::u16string& text, const codecvt_ustring_to_string& converter) {
    if (std::string_view(converter.encoding()) != "UTF-8") raise("Only UTF-8 is known.");
    return to_string(text);
}
}  // namespace fl::i18n
