#pragma once

#include "bindings/hmi_base_pi.h"

namespace ks_hmi_foundation {

class SignalsModelPI final : public HMIBasePI {
public:
    explicit SignalsModelPI(const hos::COSClassInfo* owner) noexcept : HMIBasePI(owner, ValueKind::text) {}
    hos::InternedName getName() const override { return hos::internal::makeInterned("Model"); }
    const hos::COSType* getType() const override { return typeNamed("unicodeString"); }
    int getSetAccess() const override { return hos::kReadOnlyAccess; }
    void getValue(const void* instance, hos::PropValue& value) const override;
    void setValue(void*, const hos::PropValue&) const override {}
    bool isOfferedForCompletion() const override { return true; }
};

class SignalsCountPI final : public HMIBasePI {
public:
    explicit SignalsCountPI(const hos::COSClassInfo* owner) noexcept : HMIBasePI(owner, ValueKind::number) {}
    hos::InternedName getName() const override { return hos::internal::makeInterned("Count"); }
    const hos::COSType* getType() const override { return typeNamed("uint32 scalar"); }
    int getSetAccess() const override { return hos::kReadOnlyAccess; }
    void getValue(const void* instance, hos::PropValue& value) const override;
    void setValue(void*, const hos::PropValue&) const override {}
    bool isOfferedForCompletion() const override { return true; }
};

class SignalsPersistencePI final : public HMIBasePI {
public:
    explicit SignalsPersistencePI(const hos::COSClassInfo* owner) noexcept : HMIBasePI(owner, ValueKind::hostArray) {}
    hos::InternedName getName() const override { return hos::internal::makeInterned("Persistence"); }
    const hos::COSType* getType() const override { return typeNamed("any"); }
    int getSetAccess() const override { return hos::kSettableAccess; }
    void getValue(const void* instance, hos::PropValue& value) const override;
    void setValue(void* instance, const hos::PropValue& value) const override;
    bool isDisplayed() const override { return false; }
};

}  // namespace ks_hmi_foundation
