#pragma once

#include "bindings/set_properties.h"
#include "observers/streaming_clients.h"

namespace ks_hmi_foundation {

/// Settable, unlike the signals' "Model": assigning it renames the set.
class ClientsModelPI final : public ModelPI<ks_hmi::StreamingClients> {
public:
    using ModelPI::ModelPI;
    int getSetAccess() const override { return hos::kSettableAccess; }
    void setValue(void* instance, const hos::PropValue& value) const override {
        static_cast<ks_hmi::StreamingClients*>(instance)->setModelName(value.text);
    }
};

class ClientsCountPI final : public CountPI<ks_hmi::StreamingClients> {
public:
    using CountPI::CountPI;
};

class ClientsPersistencePI final : public PersistencePI<ks_hmi::StreamingClients> {
public:
    using PersistencePI::PersistencePI;
};

}  // namespace ks_hmi_foundation
