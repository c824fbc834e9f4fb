#include "memory_host/orvex/faults.h"
#include "memory_host/orvex/functions.h"
#include "memory_host/orvex/hv_array_impl.h"
#include "memory_host/orvex/local_scope.h"

namespace orvex {

void share(const hvArray* value) noexcept {
    if (value) ++value->m_owners;
}

void giveUp(const hvArray* value) noexcept {
    if (value && --value->m_owners == 0) delete value;
}

Children::Children(const Children& other) : m_values(other.size()) {
    for (std::size_t i = 0; i < m_values.size(); ++i) {
        share(other[i].get());
        m_values[i].reset(other[i].get());
    }
}

namespace {

HvArrayPtr copyOfHeader(const hvArray& value, std::shared_ptr<Payload> payload, const Site& site) {
    HvArrayPtr copy(new hvArray(value.m_class, value.m_dimensions, std::move(payload), site));
    copy->m_fromFile = value.m_fromFile;
    return copy;
}

HvArrayPtr deepCopy(const hvArray& value, const Site& site);

void replaceByDeepCopies(Children& children, const Site& site) {
    for (std::size_t i = 0; i < children.size(); ++i) {
        if (!children[i]) continue;
        children[i] = deepCopy(*children[i], site);
        children[i]->m_isContained = true;
    }
}

HvArrayPtr deepCopy(const hvArray& value, const Site& site) {
    auto payload = std::make_shared<Payload>(*value.m_payload);
    if (auto* fields = std::get_if<StructData>(payload.get())) replaceByDeepCopies(fields->values, site);
    if (auto* cells = std::get_if<CellData>(payload.get())) replaceByDeepCopies(cells->cells, site);
    return copyOfHeader(value, std::move(payload), site);
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
    return orvex::copyOfHeader(original, original.m_payload, "hvCreateSharedDataCopy").release();
}

void THvArrayDeleter::destroy(hvArray* value) noexcept {
    orvex::leaveLocalScope(value);
    orvex::giveUp(value);
}

void THvArrayDeleter::operator()(hvArray* value) const noexcept { destroy(value); }

void matrix::destroyArray(hvArray* value) noexcept { THvArrayDeleter::destroy(value); }
