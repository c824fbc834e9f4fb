#pragma once

#include "foundation/zeroed_storage.h"
#include "host/object_system.h"

namespace ks_hmi_foundation {

/// Describes the host class "Kestrel.HMI.InstrumentedSignals", whose objects each own one native set.
class InstrumentedSignalsCOSClassInfo final : public hos::COSClassInfo, public ZeroedStorage {
public:
    const char* getName() const override { return "InstrumentedSignals"; }
    void defineMembers(hos::COSClass& hostClass) const override;
    void* createInstance() const override;
    void destroyInstance(void* instance) const override;
    bool isReferenceClass() const override { return true; }
    bool canThisClassFormArrays() const override { return true; }
    bool areClassPropertiesAllowed() const override { return true; }
};

}  // namespace ks_hmi_foundation
