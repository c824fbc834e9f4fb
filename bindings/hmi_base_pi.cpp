#include "bindings/hmi_base_pi.h"

namespace ks_hmi_foundation {

void HMIBasePI::releaseValue(hos::PropValue& value) const {
    if (m_kind != ValueKind::hostArray) return;
    matrix::destroyArray(value.array);
    value.array = nullptr;
}

const hos::COSType* HMIBasePI::typeNamed(std::string_view text) {
    return hos::COSTypeRepository::getType(hos::internal::makeInterned(text));
}

}  // namespace ks_hmi_foundation
