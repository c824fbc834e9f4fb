#pragma once

#include "bindings/set_class.h"
#include "signals/instrumented_signals.h"

namespace ks_hmi_foundation {

/// Describes the host class "Kestrel.HMI.InstrumentedSignals", whose objects each own one native set.
class InstrumentedSignalsCOSClassInfo final : public SetClassInfo<ks_hmi::InstrumentedSignals> {
public:
    const char* getName() const override { return "InstrumentedSignals"; }
    void defineMembers(hos::COSClass& hostClass) const override;
};

}  // namespace ks_hmi_foundation
