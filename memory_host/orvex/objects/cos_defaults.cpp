#include <memory>
#include <string>
#include <vector>

#include "host/object_system.h"
#include "memory_host/orvex/calls/errors.h"

// What the object system answers where a library's info objects do not say otherwise.
namespace hos {

namespace {

class MethodSignature final : public COSMethodSignature {
public:
    void appendInputType(InternedName typeText) override { m_inputs.push_back(typeText); }
    void appendOutputType(InternedName typeText) override { m_outputs.push_back(typeText); }
    void setOptionalArguments(int count) override { m_optional = count; }
    std::span<const InternedName> inputTypes() const override { return m_inputs; }
    std::span<const InternedName> outputTypes() const override { return m_outputs; }
    int optionalArguments() const override { return m_optional; }

private:
    std::vector<InternedName> m_inputs;
    std::vector<InternedName> m_outputs;
    int m_optional = 0;
};

}  // namespace

COSPropInfo::~COSPropInfo() = default;
int COSPropInfo::getPartialMatchPriority() const { return 0; }

COSMethodSignature::~COSMethodSignature() = default;
std::unique_ptr<COSMethodSignature> COSMethodSignature::createMethodSignature() {
    return std::make_unique<MethodSignature>();
}

COSMethodInfo::~COSMethodInfo() = default;
bool COSMethodInfo::isStatic() const { return false; }
bool COSMethodInfo::isVisible() const { return true; }
bool COSMethodInfo::isSealed() const { return false; }
bool COSMethodInfo::isAbstract() const { return false; }
int COSMethodInfo::getMemberAccess() const { return kPublicAccess; }

COSClass::~COSClass() = default;

COSClassInfo::~COSClassInfo() = default;
void COSClassInfo::updateInstance(void*) const {}
const char* COSClassInfo::getDescription() const { return ""; }
const char* COSClassInfo::getDetailedDescription() const { return ""; }
int COSClassInfo::getAccess() const { return kPublicAccess; }
bool COSClassInfo::isHidden() const { return false; }
bool COSClassInfo::isSealed() const { return false; }
bool COSClassInfo::isAbstract() const { return false; }
bool COSClassInfo::canThisClassContainOtherClass() const { return false; }
bool COSClassInfo::areClassFunctionsAllowed() const { return true; }
bool COSClassInfo::customSave() const { return false; }
bool COSClassInfo::customLoad() const { return false; }

COSNamespaceInfo::~COSNamespaceInfo() = default;
const char* COSNamespaceInfo::getDescription() const { return ""; }
const char* COSNamespaceInfo::getDetailedDescription() const { return ""; }
bool COSNamespaceInfo::attemptToLoadInnerNamespace(COSNamespace&, InternedName) const { return false; }
void COSNamespaceInfo::throwErrorForDefinitionOfExistingName(InternedName name) const {
    orvex::raise("NameExists", "\"" + (name.isEmpty() ? std::string() : *name.text()) +
                                   "\" is defined already; the first definition stays.");
}
bool COSNamespaceInfo::attemptToLoadClass(COSNamespace&, InternedName) const { return false; }
bool COSNamespaceInfo::attemptToLoadFunction(COSNamespace&, InternedName) const { return false; }
bool COSNamespaceInfo::attemptToLoadType(COSNamespace&, InternedName) const { return false; }
const COSMethodSelector* COSNamespaceInfo::getMethodSelector() const { return nullptr; }
void COSNamespaceInfo::loadContents(COSNamespace&) const {}
bool COSNamespaceInfo::isDestructible() const { return true; }
bool COSNamespaceInfo::isLocked() const { return false; }
bool COSNamespaceInfo::canLoadDynamicContent() const { return false; }

COSNamespace::~COSNamespace() = default;

}  // namespace hos
