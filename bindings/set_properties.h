#pragma once

#include "bindings/hmi_base_pi.h"

/// What the host properties of the two set classes share.
namespace ks_hmi_foundation {

/// "Model": the name of the set's model. Read-only, its setter without effect, unless a class says otherwise.
template <class Set>
class ModelPI : public HMIBasePI {
public:
    explicit ModelPI(const hos::COSClassInfo* owner) noexcept : HMIBasePI(owner, ValueKind::text) {}
    hos::InternedName getName() const override { return hos::internal::makeInterned("Model"); }
    const hos::COSType* getType() const override { return typeNamed("unicodeString"); }
    int getSetAccess() const override { return hos::kReadOnlyAccess; }
    void getValue(const void* instance, hos::PropValue& value) const override {
        value.text = static_cast<const Set*>(instance)->getModelName();
    }
    void setValue(void*, const hos::PropValue&) const override {}
    bool isOfferedForCompletion() const override { return true; }
};

/// "Count": the number of records. Read-only, its setter without effect.
template <class Set>
class CountPI : public HMIBasePI {
public:
    explicit CountPI(const hos::COSClassInfo* owner) noexcept : HMIBasePI(owner, ValueKind::number) {}
    hos::InternedName getName() const override { return hos::internal::makeInterned("Count"); }
    const hos::COSType* getType() const override { return typeNamed("uint32 scalar"); }
    int getSetAccess() const override { return hos::kReadOnlyAccess; }
    void getValue(const void* instance, hos::PropValue& value) const override {
        value.number = static_cast<double>(static_cast<const Set*>(instance)->getCount());
    }
    void setValue(void*, const hos::PropValue&) const override {}
    bool isOfferedForCompletion() const override { return true; }
};

/// "Persistence": the records as a struct array; assigning it appends its records. Neither displayed nor offered for
/// completion, unlike the others.
template <class Set>
class PersistencePI : public HMIBasePI {
public:
    explicit PersistencePI(const hos::COSClassInfo* owner) noexcept : HMIBasePI(owner, ValueKind::hostArray) {}
    hos::InternedName getName() const override { return hos::internal::makeInterned("Persistence"); }
    const hos::COSType* getType() const override { return typeNamed("any"); }
    int getSetAccess() const override { return hos::kSettableAccess; }
    void getValue(const void* instance, hos::PropValue& value) const override {
        value.array = static_cast<const Set*>(instance)->getPersistenceData().release();
    }
    void setValue(void* instance, const hos::PropValue& value) const override {
        static_cast<Set*>(instance)->setFromPersistenceData(value.array);
    }
    // Kept: it is the host's way to save, and not a script's.
    bool isDisplayed() const override { return false; }
};

}  // namespace ks_hmi_foundation
