#include "workbench/check/field_names.h"

#include <algorithm>

#include "host/values.h"

namespace workbench {

namespace {

bool isCell(const hvArray* value) { return hvGetClassID(value) == hvCELL_CLASS; }

std::vector<const char*> fieldsOf(const hvArray* value) {
    std::vector<const char*> names;
    const int count = hvGetNumberOfFields(value);
    names.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) names.push_back(hvGetFieldNameByNumber(value, i));
    return names;
}

void addWrong(const hvArray* value, const std::string& path, std::vector<std::string>& found) {
    if (!value) return;
    if (isCell(value))
        for (const hvArray* const cell : ks_host::cellsOf(value)) addWrong(cell, path, found);
    if (!ks_host::isStruct(value)) return;
    for (const char* const name : fieldsOf(value)) {
        const std::string full = path + name;
        if (!isFieldName(name) && std::find(found.begin(), found.end(), full) == found.end()) found.push_back(full);
        for (const std::size_t i : ks_host::indicesOf(value)) addWrong(hvGetField(value, i, name), full + ".", found);
    }
}

HvArrayPtr withoutWrongIn(const hvArray* cells) {
    HvArrayPtr kept(hvCreateCellArray(hvGetNumberOfDimensions(cells), hvGetDimensions(cells)));
    for (const std::size_t i : ks_host::indicesOf(cells))
        if (const hvArray* const cell = hvGetCell(cells, i))
            hvSetCell(kept.get(), i, withoutWrongFields(cell).release());
    return kept;
}

}  // namespace

bool isFieldName(std::string_view text) noexcept {
    const auto isLetter = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); };
    return !text.empty() && isLetter(text.front()) && std::all_of(text.begin(), text.end(), [&](char c) {
        return isLetter(c) || (c >= '0' && c <= '9') || c == '_';
    });
}

std::vector<std::string> wrongFieldNames(const hvArray* value) {
    std::vector<std::string> found;
    addWrong(value, {}, found);
    return found;
}

HvArrayPtr withoutWrongFields(const hvArray* value) {
    if (!value) return nullptr;
    if (isCell(value)) return withoutWrongIn(value);
    if (!ks_host::isStruct(value)) return HvArrayPtr(hvCreateDeepCopy(value));
    std::vector<const char*> names = fieldsOf(value);
    std::erase_if(names, [](const char* name) { return !isFieldName(name); });
    HvArrayPtr kept(hvCreateStructArray(hvGetNumberOfDimensions(value), hvGetDimensions(value),
                                        static_cast<int>(names.size()), names.data()));
    for (const char* const name : names)
        for (const std::size_t i : ks_host::indicesOf(value))
            if (const hvArray* const field = hvGetField(value, i, name))
                hvSetField(kept.get(), i, name, withoutWrongFields(field).release());
    return kept;
}

}  // namespace workbench
