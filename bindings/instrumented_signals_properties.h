#pragma once

#include "bindings/set_properties.h"
#include "signals/instrumented_signals.h"

namespace ks_hmi_foundation {

class SignalsModelPI final : public ModelPI<ks_hmi::InstrumentedSignals> {
public:
    using ModelPI::ModelPI;
};

class SignalsCountPI final : public CountPI<ks_hmi::InstrumentedSignals> {
public:
    using CountPI::CountPI;
};

class SignalsPersistencePI final : public PersistencePI<ks_hmi::InstrumentedSignals> {
public:
    using PersistencePI::PersistencePI;
};

}  // namespace ks_hmi_foundation
