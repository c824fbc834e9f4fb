#pragma once

#include "bindings/set_properties.h"
#include "signals/instrumented_signals.h"

namespace ks_hmi_foundation {

using SignalsModelPI = ModelPI<ks_hmi::InstrumentedSignals>;
using SignalsCountPI = CountPI<ks_hmi::InstrumentedSignals>;
using SignalsPersistencePI = PersistencePI<ks_hmi::InstrumentedSignals>;

}  // namespace ks_hmi_foundation
