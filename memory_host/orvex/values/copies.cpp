#include <algorithm>

#include "memory_host/orvex/account/faults.h"
#include "memory_host/orvex/account/scope_of_value.h"
#include "memory_host/orvex/calls/errors.h"
#include "memory_host/orvex/values/hv_array_impl.h"

namespace orvex {

SharedValue& Children::forWriting(std::size_t position) {
    if (m_values.use_count() > 1) {
        const std::shared_ptr<SharedValue[]> own = std::make_shared<SharedValue[]>(m_count);
        std::copy_n(m_values.get(), m_count, own.get());
        m_values = own;
    }
    return m_values.get()[position];
}

SharedValue contained(HvArrayPtr value) noexcept {
    if (!value) return nullptr;
    if (value->m_place) leaveScopes(value.get());
    value->m_lifetime = Lifetime::contained;
    return SharedValue(value.release(), /*add_ref=*/false);
}

namespace {

HvArrayPtr copyOf(const hvArray& value, Payload payload, const Site& site) {
    HvArrayPtr copy = makeValue(value.m_class, value.m_dimensions, std::move(payload), site);
    copy->m_fromFile = value.m_fromFile;
    return copy;
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
    return copyOf(value, value.m_payload, site);
}

const hvArray& copyable(const hvArray* value) {
    faults::point(faults::Operation::copyValue);
    if (!value) raise("InvalidArgument", "There is no value to copy (null).");
    return *value;
}

}  // namespace
}  // namespace orvex

hvArray* hvCreateDeepCopy(const hvArray* value) {
    return orvex::deepCopy(orvex::copyable(value), "hvCreateDeepCopy").release();
}

hvArray* hvCreateSharedDataCopy(const hvArray* value) {
    const hvArray& original = orvex::copyable(value);
    return orvex::copyOf(original, original.m_payload, "hvCreateSharedDataCopy").release();
}

void THvArrayDeleter::destroy(hvArray* value) noexcept {
    if (!value) return;
    if (value->m_lifetime == orvex::Lifetime::expired) return orvex::reportExpired(value);
    if (value->m_place) orvex::leaveScopes(value);
    intrusive_ptr_release(value);
}

void THvArrayDeleter::operator()(hvArray* value) const noexcept { destroy(value); }

void matrix::destroyArray(hvArray* value) noexcept { THvArrayDeleter::destroy(value); }
