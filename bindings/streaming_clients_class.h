#pragma once

#include "bindings/set_class.h"
#include "observers/streaming_clients.h"

namespace ks_hmi_foundation {

/// Describes the host class "Kestrel.HMI.StreamingClients", whose objects each own one native set.
class StreamingClientsCOSClassInfo final : public SetClassInfo<ks_hmi::StreamingClients> {
public:
    const char* getName() const override { return "StreamingClients"; }
    void defineMembers(hos::COSClass& hostClass) const override;
};

}  // namespace ks_hmi_foundation
