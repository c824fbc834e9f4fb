#include <optional>
#include <utility>

#include "memory_host/orvex/account/faults.h"
#include "memory_host/orvex/calls/errors.h"
#include "memory_host/orvex/values/hv_array_impl.h"

namespace orvex {

void markAsPersisted(hvArray* structArray) {
    if (!payloadOf<StructData>(structArray))
        raise("WrongClass", "Only a struct is read as a saved record, not " + describeValue(structArray) + ".");
    structArray->m_fromFile = true;
}

namespace {

[[noreturn, gnu::cold, gnu::noinline]] void refuseStored() {
    raise("InvalidArgument", "A value in a container, or the container itself, cannot be stored; store a copy.");
}

HvArrayPtr takenOver(const hvArray* container, hvArray* value) {
    if (!value) return nullptr;
    if (value == container || value->m_lifetime == Lifetime::contained) refuseStored();
    if (value->m_lifetime != Lifetime::expired) return HvArrayPtr(value);
    reportExpired(value);
    return nullptr;
}

[[noreturn, gnu::cold, gnu::noinline]] void refuseClass(const char* what, const hvArray* value) {
    raise("WrongClass", std::string(what) + ", not in " + describeValue(value) + ".");
}

[[noreturn, gnu::cold, gnu::noinline]] void refuseIndex(std::size_t index, std::size_t count, const char* what) {
    raise("IndexOutOfRange",
          std::string("There is no ") + what + " " + std::to_string(index + 1) + " of " + std::to_string(count) + ".");
}

[[noreturn, gnu::cold, gnu::noinline]] void refuseField(const StructData& data, const char* name) {
    raise("UnknownField", "There is no field \"" + std::string(name ? name : "") +
                              "\" in a struct with these fields: " + data.names->joined() + ".");
}

[[noreturn, gnu::cold, gnu::noinline]] void refuseSlot(const hvArray* structArray, std::size_t index,
                                                       const char* name) {
    const auto* data = payloadOf<StructData>(structArray);
    if (!data) refuseClass("Fields are set in a struct", structArray);
    const std::size_t count = structArray->m_dimensions.elements();
    if (index >= count) refuseIndex(index, count, "element");
    refuseField(*data, name);
}

SharedValue& fieldSlot(hvArray* structArray, std::size_t index, const char* name) {
    auto* data = payloadOf<StructData>(structArray);
    const bool isElement = data && index < structArray->m_dimensions.elements();
    const int field = isElement && name ? data->fieldNumber(name) : -1;
    if (field < 0) refuseSlot(structArray, index, name);
    return data->values.forWriting(index * data->names->size() + static_cast<std::size_t>(field));
}

FieldNames::Ptr fieldNamesOf(std::span<const char* const> names, std::size_t values) {
    if (names.empty() ? values > 0 : values % names.size() != 0)
        raise("InvalidDimensions",
              std::to_string(values) + " values cannot fill structs of " + std::to_string(names.size()) + " fields.");
    return FieldNames::of(names);
}

// Stores the value and gives back what was there, to be released when everything is in order again.
SharedValue storedInField(hvArray* structArray, std::size_t index, const char* name, hvArray* value) {
    HvArrayPtr incoming = takenOver(structArray, value);
    faults::point(faults::Operation::writeField);
    SharedValue& slot = fieldSlot(structArray, index, name);
    return std::exchange(slot, contained(std::move(incoming)));
}

// The field's position among the values where storing there cannot fail, as mostly; else nothing.
std::optional<std::size_t> everydayPlace(const hvArray* structArray, std::size_t index, const char* name,
                                         const hvArray* value) noexcept {
    const auto* data = payloadOf<StructData>(structArray);
    const bool isEveryday = data && !data->values.isShared() && !faults::internal::g_active && value &&
                            value != structArray && value->m_lifetime != Lifetime::contained &&
                            value->m_lifetime != Lifetime::expired;
    if (!isEveryday || !name || index >= structArray->m_dimensions.elements()) return std::nullopt;
    const int field = data->fieldNumber(name);
    if (field < 0) return std::nullopt;
    return index * data->names->size() + static_cast<std::size_t>(field);
}

[[gnu::noinline]] void replaceField(hvArray* structArray, std::size_t index, const char* name, hvArray* value) {
    const SharedValue earlier = storedInField(structArray, index, name, value);
}

}  // namespace

HvArrayPtr makeStructColumn(std::span<const char* const> fieldNames, std::span<HvArrayPtr> values, const Site& site) {
    faults::point(faults::Operation::createValue);
    StructData data{fieldNamesOf(fieldNames, values.size()), Children(values.size())};
    for (std::size_t i = 0; i < values.size(); ++i) {
        HvArrayPtr incoming = takenOver(nullptr, values[i].get());
        values[i].release();
        data.values.forWriting(i) = contained(std::move(incoming));
    }
    const std::size_t rows = fieldNames.empty() ? 0 : values.size() / fieldNames.size();
    return makeValue(hvSTRUCT_CLASS, Dimensions(rows, 1), std::move(data), site);
}

}  // namespace orvex

void* hvGetDataForWriting(hvArray* value) {
    auto* elements = orvex::payloadOf<orvex::Elements>(value);
    return elements ? elements->dataForWriting() : nullptr;
}

void hvReplaceField(hvArray* structArray, std::size_t index, const char* name, hvArray* value) {
    const auto place = orvex::everydayPlace(structArray, index, name, value);
    if (!place) return orvex::replaceField(structArray, index, name, value);
    if (value->m_place) orvex::leaveScopes(value);
    value->m_lifetime = orvex::Lifetime::contained;
    auto& values = orvex::payloadOf<orvex::StructData>(structArray)->values;
    const orvex::SharedValue earlier = values.exchange(*place, orvex::SharedValue(value, /*add_ref=*/false));
}

void hvSetField(hvArray* structArray, std::size_t index, const char* name, hvArray* value) {
    // Whoever sets a field twice this way loses the first value: the ledger then shows it.
    [[maybe_unused]] hvArray* const lost = orvex::storedInField(structArray, index, name, value).detach();
}

void orvex::shareField(hvArray* structArray, std::size_t index, const char* name, const hvArray* value) {
    faults::point(faults::Operation::writeField);
    if (value && value->m_lifetime != Lifetime::contained)
        raise("InvalidArgument", "Only a value in a container is shared with another one.");
    const SharedValue earlier =
        std::exchange(fieldSlot(structArray, index, name), SharedValue(const_cast<hvArray*>(value)));
}

void hvSetCell(hvArray* cellArray, std::size_t index, hvArray* value) {
    HvArrayPtr incoming = orvex::takenOver(cellArray, value);
    orvex::faults::point(orvex::faults::Operation::writeCell);
    auto* data = orvex::payloadOf<orvex::CellData>(cellArray);
    if (!data) orvex::refuseClass("Cells are set in a cell array", cellArray);
    if (index >= data->cells.size()) orvex::refuseIndex(index, data->cells.size(), "cell");
    const orvex::SharedValue earlier =
        std::exchange(data->cells.forWriting(index), orvex::contained(std::move(incoming)));
}

void hvSetArrayScope(hvArray* value, hvVariableScope) noexcept {
    using orvex::Lifetime;
    if (!value || value->m_lifetime == Lifetime::contained || value->m_lifetime == Lifetime::expired) return;
    orvex::leaveScopes(value);
    value->m_lifetime = Lifetime::scoped;
}

void hvSetArrayScope(hvArray* value, std::nullptr_t) noexcept { hvSetArrayScope(value, hvSCOPE_NONE); }
