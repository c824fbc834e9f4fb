#pragma once

#include "bindings/set_properties.h"
#include "observers/streaming_clients.h"

namespace ks_hmi_foundation {

/// Settable, unlike the signals' "Model": assigning it renames the set.
class ClientsModelPI final : public ModelPI<ks_hmi::StreamingClients> {
public:
    using ModelPI::ModelPI;
    // Kept: scripts may rename a set of clients; a set of signals is renamed by the environment itself.
    int getSetAccess() const override { return hos::kSettableAccess; }
    void setValue(void* instance, const hos::PropValue& value) const override {
        static_cast<ks_hmi::StreamingClients*>(instance)->setModelName(value.text);
    }
};

using ClientsCountPI = CountPI<ks_hmi::StreamingClients>;
using ClientsPersistencePI = PersistencePI<ks_hmi::StreamingClients>;

}  // namespace ks_hmi_foundation
