#pragma once

#include <memory>

#include "foundation/zeroed_storage.h"
#include "host/object_system.h"

namespace ks_hmi_foundation {

/// What the descriptions of the two set classes share: each host object owns one native set.
template <class Set>
class SetClassInfo : public hos::COSClassInfo, public ZeroedStorage {
public:
    void* createInstance() const override { return std::make_unique<Set>().release(); }
    void destroyInstance(void* instance) const override {
        const std::unique_ptr<Set> destroyed(static_cast<Set*>(instance));
    }
    bool isReferenceClass() const override { return true; }
    bool canThisClassFormArrays() const override { return true; }
    bool areClassPropertiesAllowed() const override { return true; }
};

}  // namespace ks_hmi_foundation
