#include "foundation/field_reader.h"

#include "foundation/errors.h"
#include "foundation/host_value.h"

namespace ks_hmi_foundation {

namespace errors = plv_hmi_foundation::errors;

const hvArray* FieldSource::require(const char* name) {
    const hvArray* const value = find(name);
    if (value == nullptr) errors::raise(errors::MissingField(name, elementNumber()));
    return value;
}

double FieldSource::numberIn(const hvArray* value, const char* name) const {
    const std::optional<double> number = numberAt(value, 0);
    if (!number) errors::raise(errors::InvalidFieldValue(name, elementNumber()));
    return *number;
}

std::u16string FieldSource::text(const char* name) { return textOf(require(name)); }

std::string FieldSource::narrowText(const char* name) { return utf8TextOf(require(name)); }

double FieldSource::number(const char* name) { return numberIn(require(name), name); }

std::optional<double> FieldSource::numberUnlessEmpty(const char* name) {
    const hvArray* const value = require(name);
    return hvIsEmpty(value) ? std::nullopt : std::optional(numberIn(value, name));
}

std::int32_t FieldSource::integer(const char* name) { return toInt32(number(name)); }

// NaN differs from 0.0 and so reads as true.
bool FieldSource::flag(const char* name) { return number(name) != 0.0; }

template <class Text>
std::vector<Text> FieldSource::cellsOf(const char* name, Text (*read)(const hvArray*)) {
    const hvArray* const cells = require(name);
    if (hvGetClassID(cells) != hvCELL_CLASS) errors::raise(errors::InvalidFieldValue(name, elementNumber()));
    std::vector<Text> result;
    result.reserve(hvGetNumberOfElements(cells));
    for (const hvArray* const cell : ks_host::cellsOf(cells)) result.push_back(read(cell));
    return result;
}

std::vector<std::u16string> FieldSource::texts(const char* name) { return cellsOf(name, &textOf); }

std::vector<std::string> FieldSource::narrowTexts(const char* name) { return cellsOf(name, &utf8TextOf); }

std::uint64_t FieldSource::widened(const char* name) {
    const hvArray* const value = find(name);
    // Kept: 0 and not a new record's 1, which tells an old record apart.
    if (value == nullptr) return 0;
    numberIn(value, name);  // refuses what holds no number
    const auto low = static_cast<std::int32_t>(hvGetScalarInt(value));
    return static_cast<std::uint64_t>(std::int64_t{low});
}

bool FieldSource::truth(const char* name) {
    const hvArray* const value = find(name);
    if (hvIsEmpty(value)) return false;
    if (const bool* const logicals = hvGetLogicals(value)) return logicals[0];
    return numberIn(value, name) != 0.0;
}

void FieldSource::readIfPresent(const char* name, std::int32_t& member) {
    if (const hvArray* const value = find(name)) member = toInt32(numberIn(value, name));
}

void FieldSource::readIfPresent(const char* name, bool& member) {
    if (const hvArray* const value = find(name)) member = numberIn(value, name) != 0.0;
}

const hvArray* ObjectProperties::find(const char* name) {
    m_value = inLocalScope(HvArrayPtr(hvGetPropertyShared(m_object, 0, name)));
    return m_value.get();
}

}  // namespace ks_hmi_foundation
