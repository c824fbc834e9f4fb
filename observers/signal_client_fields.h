#pragma once

#include "foundation/field_reader.h"
#include "observers/signal_client.h"

namespace ks_hmi {

/// Reads all persisted members, from a saved element or a host object; what was read before a failure stays read.
void readFields(SignalClient& client, ks_hmi_foundation::FieldSource& source);

}  // namespace ks_hmi
