#include "memory_host/orvex/account/described_things.h"
#include "memory_host/orvex/objects/objects.h"
#include "memory_host/orvex/values/element_type.h"
#include "memory_host/orvex/values/hv_array_impl.h"

namespace orvex {
namespace {

constexpr std::uint32_t kFromFileBit = 0x10;

const hos::COSObject* firstObject(const hvArray* value) noexcept {
    const Objects* objects = objectsOf(value);
    return objects && !objects->empty() ? objects->front().get() : nullptr;
}

template <class T>
const T* elementsOf(const hvArray* value, hvClassID classId) noexcept {
    return hvGetClassID(value) == classId ? static_cast<const T*>(payloadOf<Elements>(value)->data()) : nullptr;
}

}  // namespace

std::string internal::describeValueOf(const LedgerEntry& entry) {
    return describeValue(&static_cast<const hvArray&>(entry));
}

std::string describeValue(const hvArray* value) {
    return value ? std::string(hvGetClassName(value)) + " " + value->m_dimensions.text() : "null";
}

}  // namespace orvex

hvClassID hvGetClassID(const hvArray* value) noexcept { return value ? value->m_class : hvUNKNOWN_CLASS; }

std::uint32_t hvGetClassWord(const hvArray* value) noexcept {
    if (!value) return 0;
    return value->m_fromFile ? value->m_class | orvex::kFromFileBit : std::uint32_t{value->m_class};
}

const char* hvGetClassName(const hvArray* value) noexcept {
    if (const hos::COSObject* object = orvex::firstObject(value)) return object->className().c_str();
    return value ? orvex::kClassNames[value->m_class].data() : "unknown";
}

std::size_t hvGetNumberOfDimensions(const hvArray* value) noexcept { return value ? value->m_dimensions.count() : 0; }

const std::size_t* hvGetDimensions(const hvArray* value) noexcept {
    return value ? value->m_dimensions.data() : nullptr;
}

std::size_t hvGetNumberOfElements(const hvArray* value) noexcept { return value ? value->m_dimensions.elements() : 0; }

bool hvIsEmpty(const hvArray* value) noexcept { return hvGetNumberOfElements(value) == 0; }

bool hvIsA(const hvArray* value, const char* className) noexcept {
    const hos::COSObject* object = orvex::firstObject(value);
    return object && className && object->isA(className);
}

bool hvIsLogicalScalarTrue(const hvArray* value) noexcept {
    return hvGetNumberOfElements(value) == 1 && hvGetLogicals(value) && *hvGetLogicals(value);
}

const hvArray* hvGetField(const hvArray* structArray, std::size_t index, const char* name) noexcept {
    const auto* data = orvex::payloadOf<orvex::StructData>(structArray);
    if (!data || !name || index >= structArray->m_dimensions.elements()) return nullptr;
    const int field = data->fieldNumber(name);
    if (field < 0) return nullptr;
    const std::size_t fields = data->names->size();
    const std::size_t place = index * fields + static_cast<std::size_t>(field);
    // Who reads a field mostly reads that of the next element soon.
    if (place + fields < data->values.size()) __builtin_prefetch(data->values[place + fields].get());
    return data->values[place].get();
}

int hvGetNumberOfFields(const hvArray* value) noexcept {
    const auto* data = orvex::payloadOf<orvex::StructData>(value);
    return data ? static_cast<int>(data->names->size()) : 0;
}

const char* hvGetFieldNameByNumber(const hvArray* value, int fieldNumber) noexcept {
    if (fieldNumber < 0 || fieldNumber >= hvGetNumberOfFields(value)) return nullptr;
    const auto position = static_cast<std::size_t>(fieldNumber);
    return (*orvex::payloadOf<orvex::StructData>(value)->names)[position].c_str();
}

const hvArray* hvGetCell(const hvArray* cellArray, std::size_t index) noexcept {
    const auto* data = orvex::payloadOf<orvex::CellData>(cellArray);
    return data && index < data->cells.size() ? data->cells[index].get() : nullptr;
}

const bool* hvGetLogicals(const hvArray* value) noexcept { return orvex::elementsOf<bool>(value, hvLOGICAL_CLASS); }

const double* hvGetDoubles(const hvArray* value) noexcept { return orvex::elementsOf<double>(value, hvDOUBLE_CLASS); }

const char16_t* hvGetChars(const hvArray* value) noexcept { return orvex::elementsOf<char16_t>(value, hvCHAR_CLASS); }

const void* hvGetData(const hvArray* value) noexcept {
    const auto* elements = orvex::payloadOf<orvex::Elements>(value);
    return elements ? elements->data() : nullptr;
}
