#include "workbench/session/records.h"

#include <string>

#include "signals/signal_specification.h"
#include "workbench/values/host_value_writer.h"

namespace workbench {

bool isSavedAlike(const ks_hmi::SignalSpecification& one, const ks_hmi::SignalSpecification& other) {
    return one.isEqual(&other) && one.m_excludeForSave == other.m_excludeForSave;
}

// To the host, parameters with a NaN are never equal.
bool isSavedAlike(const ks_hmi::SignalClient& one, const ks_hmi::SignalClient& other) {
    const ks_hmi::SignalClientFields& fields = one;
    const auto textOf = [](const hvArray* params) {
        std::string text;
        appendJsonValue(text, params);
        return text;
    };
    return fields == other && textOf(one.m_observerParams.get()) == textOf(other.m_observerParams.get());
}

}  // namespace workbench
