#include <algorithm>
#include <utility>

#include "memory_host/orvex/account/faults.h"
#include "memory_host/orvex/account/scope_of_value.h"
#include "memory_host/orvex/calls/errors.h"
#include "memory_host/orvex/values/hv_array_impl.h"

namespace orvex {

namespace {

template <class Contents>
HvArrayPtr copyOf(const hvArray& value, Contents&& contents, const Site& site) {
    HvArrayPtr copy = makeValue(value.m_class, value.m_dimensions, std::forward<Contents>(contents), site);
    copy->m_fromFile = value.m_fromFile;
    return copy;
}

HvArrayPtr sharedDataCopy(const hvArray& value, const Site& site) {
    if (const auto* elements = payloadOf<Elements>(&value)) return copyOf(value, Elements(*elements), site);
    return copyOf(value, Payload(value.m_payload), site);
}

HvArrayPtr deepCopy(const hvArray& value, const Site& site);

Children deepCopies(const Children& originals, const Site& site) {
    Children copies(originals.size());
    for (std::size_t i = 0; i < originals.size(); ++i) {
        if (!originals[i]) continue;
        copies.forWriting(i) = contained(deepCopy(*originals[i], site));
    }
    return copies;
}

HvArrayPtr deepCopy(const hvArray& value, const Site& site) {
    if (const auto* fields = payloadOf<StructData>(&value))
        return copyOf(value, StructData{fields->names, deepCopies(fields->values, site)}, site);
    if (const auto* cells = payloadOf<CellData>(&value))
        return copyOf(value, CellData{deepCopies(cells->cells, site)}, site);
    return sharedDataCopy(value, site);
}

const hvArray& copyable(const hvArray* value) {
    faults::point(faults::Operation::copyValue);
    if (!value) raise("InvalidArgument", "There is no value to copy (null).");
    return *value;
}

template <class Value>
auto& structIn(Value* value) {
    if (auto* const data = payloadOf<StructData>(value)) return *data;
    raise("WrongClass", "This takes structs only, not " + describeValue(value) + ".");
}

bool areSame(const FieldNames& some, const FieldNames& others) {
    return &some == &others || std::equal(some.begin(), some.end(), others.begin(), others.end());
}

bool isSame(const hvArray& one, const hvArray& other) {
    if (one.m_class != other.m_class || !std::ranges::equal(one.m_dimensions.lengths(), other.m_dimensions.lengths()))
        return false;
    const auto* const elements = payloadOf<Elements>(&one);
    const auto* const others = payloadOf<Elements>(&other);
    if (elements && others) return *elements == *others;
    const auto* const fields = payloadOf<StructData>(&one);
    const auto* const otherFields = payloadOf<StructData>(&other);
    return fields && otherFields && fields->names->size() == 0 && otherFields->names->size() == 0;
}

}  // namespace

HvArrayPtr shareOf(const hvArray* value) {
    const hvArray& original = copyable(value);
    if (original.m_lifetime != Lifetime::contained) return sharedDataCopy(original, "shareOf");
    return HvArrayPtr(SharedValue(const_cast<hvArray*>(value)).detach());
}

void shareRepeats(hvArray* structArray) {
    StructData& data = structIn(structArray);
    const std::size_t fields = data.names->size();
    for (std::size_t i = fields; i < data.values.size(); ++i) {
        hvArray* const before = data.values[i - fields].get();
        const hvArray* const value = data.values[i].get();
        if (before && value && before != value && isSame(*before, *value))
            data.values.forWriting(i) = SharedValue(before);
    }
}

HvArrayPtr joinedColumns(std::span<const HvArrayPtr> columns) {
    faults::point(faults::Operation::createValue);
    if (columns.empty()) raise("InvalidArgument", "There is nothing to join.");
    std::size_t count = 0;
    for (const HvArrayPtr& column : columns) count += structIn(column.get()).values.size();
    const FieldNames::Ptr names = structIn(columns.front().get()).names;
    StructData joined{names, Children(count)};
    std::size_t at = 0;
    for (const HvArrayPtr& column : columns) {
        const StructData& data = structIn(column.get());
        if (!areSame(*names, *data.names)) raise("InvalidArgument", "Structs with different fields cannot be joined.");
        for (std::size_t i = 0; i < data.values.size(); ++i) joined.values.forWriting(at++) = data.values[i];
    }
    const std::size_t rows = names->size() == 0 ? 0 : count / names->size();
    HvArrayPtr result = makeValue(hvSTRUCT_CLASS, Dimensions(rows, 1), std::move(joined), "joinedColumns");
    result->m_fromFile = columns.front()->m_fromFile;
    return result;
}

bool areSeenToBeSame(const StructElement& one, const StructElement& other) noexcept {
    const auto* const some = payloadOf<StructData>(one.structArray);
    const auto* const others = payloadOf<StructData>(other.structArray);
    const auto isThere = [](const StructElement& it) { return it.index < it.structArray->m_dimensions.elements(); };
    if (!some || !others || !areSame(*some->names, *others->names) || !isThere(one) || !isThere(other)) return false;
    const std::size_t fields = some->names->size();
    for (std::size_t field = 0; field < fields; ++field) {
        const hvArray* const value = some->values[one.index * fields + field].get();
        const hvArray* const another = others->values[other.index * fields + field].get();
        if (value != another && !(value && another && isSame(*value, *another))) return false;
    }
    return true;
}

HvArrayPtr gatheredElements(std::span<const StructElement> elements, const hvArray* absent) {
    faults::point(faults::Operation::createValue);
    const StructData& defaults = structIn(absent);
    const std::size_t fields = defaults.names->size();
    StructData gathered{defaults.names, Children(fields * elements.size())};
    const FieldNames* known = nullptr;
    std::size_t at = 0;
    for (const StructElement& element : elements) {
        const StructData& data = structIn(element.structArray);
        if (data.names.get() != known && !areSame(*data.names, *defaults.names))
            raise("InvalidArgument", "Structs with different fields cannot be gathered.");
        known = data.names.get();
        if (element.index >= element.structArray->m_dimensions.elements())
            raise("IndexOutOfRange", "There is no element " + std::to_string(element.index + 1) + " to gather.");
        for (std::size_t field = 0; field < fields; ++field, ++at) {
            const SharedValue& value = data.values[element.index * fields + field];
            gathered.values.forWriting(at) = value ? value : defaults.values[field];
        }
    }
    return makeValue(hvSTRUCT_CLASS, Dimensions(elements.size(), 1), std::move(gathered), "gatheredElements");
}

}  // namespace orvex

hvArray* hvCreateDeepCopy(const hvArray* value) {
    return orvex::deepCopy(orvex::copyable(value), "hvCreateDeepCopy").release();
}

hvArray* hvCreateSharedDataCopy(const hvArray* value) {
    return orvex::sharedDataCopy(orvex::copyable(value), "hvCreateSharedDataCopy").release();
}

void THvArrayDeleter::destroy(hvArray* value) noexcept {
    if (value) orvex::release(value);
}

void THvArrayDeleter::operator()(hvArray* value) const noexcept {
    if (value) orvex::release(value);
}

void matrix::destroyArray(hvArray* value) noexcept {
    if (value) orvex::release(value);
}
