#pragma once

#include "bindings/set_methods.h"

namespace ks_hmi_foundation {

using StreamingClientsMethod = SetMethod<ks_hmi::StreamingClients>;

class StreamingClientsConstructor final : public SetConstructor<ks_hmi::StreamingClients> {};
class StreamingClientsAdd final : public SetAdd<ks_hmi::StreamingClients> {};
class StreamingClientsSet final : public SetSet<ks_hmi::StreamingClients> {};
class StreamingClientsRemove final : public SetRemove<ks_hmi::StreamingClients> {};

class StreamingClientsGet final : public StreamingClientsMethod {
public:
    StreamingClientsGet() : StreamingClientsMethod("get", {kSet, "uint32 scalar"}, {kRecord}) {}
    void invoke(hos::Invocation& call) const override;
};

}  // namespace ks_hmi_foundation
