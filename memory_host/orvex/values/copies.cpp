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

}  // namespace

HvArrayPtr shareOf(const hvArray* value) {
    const hvArray& original = copyable(value);
    if (original.m_lifetime != Lifetime::contained) return sharedDataCopy(original, "shareOf");
    return HvArrayPtr(SharedValue(const_cast<hvArray*>(value)).detach());
}

}  // namespace orvex

hvArray* hvCreateDeepCopy(const hvArray* value) {
    return orvex::deepCopy(orvex::copyable(value), "hvCreateDeepCopy").release();
}

hvArray* hvCreateSharedDataCopy(const hvArray* value) {
    return orvex::sharedDataCopy(orvex::copyable(value), "hvCreateSharedDataCopy").release();
}

void THvArrayDeleter::destroy(hvArray* value) noexcept {
    if (!value) return;
    if (value->m_lifetime == orvex::Lifetime::expired) return orvex::reportExpired(value);
    if (value->m_place) orvex::leaveScopes(value);
    intrusive_ptr_release(value);
}

void THvArrayDeleter::operator()(hvArray* value) const noexcept { destroy(value); }

void matrix::destroyArray(hvArray* value) noexcept { THvArrayDeleter::destroy(value); }
