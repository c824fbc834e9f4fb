#include <algorithm>

#include "memory_host/orvex/account/faults.h"
#include "memory_host/orvex/account/local_scope.h"
#include "memory_host/orvex/calls/errors.h"
#include "memory_host/orvex/values/hv_array_impl.h"

namespace orvex {

void share(const hvArray* value) noexcept {
    if (value) ++value->m_owners;
}

void giveUp(const hvArray* value) noexcept {
    if (value && --value->m_owners == 0) delete value;
}

HvArrayPtr& Children::forWriting(std::size_t position) {
    if (m_values.use_count() > 1) {
        const std::shared_ptr<HvArrayPtr[]> own = std::make_shared_for_overwrite<HvArrayPtr[]>(m_count);
        std::transform(m_values.get(), m_values.get() + m_count, own.get(), [](const HvArrayPtr& value) {
            share(value.get());
            return HvArrayPtr(value.get());
        });
        m_values = own;
    }
    return m_values.get()[position];
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
        HvArrayPtr& copy = copies.forWriting(i);
        copy = deepCopy(*originals[i], site);
        copy->m_isContained = true;
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
    orvex::leaveLocalScope(value);
    orvex::giveUp(value);
}

void THvArrayDeleter::operator()(hvArray* value) const noexcept { destroy(value); }

void matrix::destroyArray(hvArray* value) noexcept { THvArrayDeleter::destroy(value); }
