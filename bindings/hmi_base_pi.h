#pragma once

#include <string_view>

#include "host/object_system.h"

namespace ks_hmi_foundation {

/// Common base of the library's host properties: who owns the property, what its getter hands out, and the
/// answers to the host's questions that all of them share.
class HMIBasePI : public hos::COSPropInfo {
public:
    enum class ValueKind : int { number = 0, hostArray = 1, text = 2 };

    int getGetAccess() const override { return hos::kPublicAccess; }
    /// Destroys what the getter handed out when that is a host array; nothing else is owned.
    void releaseValue(hos::PropValue& value) const override;

    bool isHidden() const override { return false; }
    bool isTransient() const override { return false; }
    bool isDependent() const override { return false; }
    bool isWarnOnCopyError() const override { return false; }
    bool isAbortedOnEqualAssignment() const override { return false; }
    bool isNotifiedOnRead() const override { return false; }
    bool isCopied() const override { return true; }
    bool isNotifiedOnWrite() const override { return false; }
    bool isDisplayed() const override { return true; }
    bool isNeverAmbiguous() const override { return false; }
    bool isCaseInsensitive() const override { return false; }
    bool isOfferedForCompletion() const override { return false; }

protected:
    HMIBasePI(const hos::COSClassInfo* owner, ValueKind kind) noexcept : m_owner(owner), m_kind(kind) {}

    static const hos::COSType* typeNamed(std::string_view text);

private:
    [[maybe_unused]] const hos::COSClassInfo* m_owner;
    ValueKind m_kind;
};

}  // namespace ks_hmi_foundation
