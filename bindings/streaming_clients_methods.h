#pragma once

#include "bindings/set_methods.h"

namespace ks_hmi_foundation {

using StreamingClientsMethod = SetMethod<ks_hmi::StreamingClients>;

using StreamingClientsConstructor = SetConstructor<ks_hmi::StreamingClients>;
using StreamingClientsAdd = SetAdd<ks_hmi::StreamingClients>;
using StreamingClientsSet = SetSet<ks_hmi::StreamingClients>;
using StreamingClientsRemove = SetRemove<ks_hmi::StreamingClients>;

class StreamingClientsGet final : public StreamingClientsMethod {
public:
    StreamingClientsGet() : StreamingClientsMethod("get", {kSet, "uint32 scalar"}, {kRecord}) {}
    void invoke(hos::Invocation& call) const override;
};

}  // namespace ks_hmi_foundation
