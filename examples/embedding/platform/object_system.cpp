#include "host/object_system.h"

#include <map>
#include <set>

#include "platform/platform.h"
#include "platform/value.h"

// The object system, as far as the library needs it to register its classes and to find the set behind an object.
// Scripts would need properties, methods and conversions besides: each info object describes them.

namespace smallest_platform {
namespace {

class Namespace final : public hos::COSNamespace {
public:
    Namespace(std::unique_ptr<hos::COSNamespaceInfo> info, std::string fullName)
        : m_info(std::move(info)), m_fullName(std::move(fullName)) {}
    void addInnerNamespace(std::unique_ptr<hos::COSNamespaceInfo> info) override;
    void addClass(std::unique_ptr<hos::COSClassInfo> info, int, int) override {
        const std::string name = info->getName();
        if (!m_classes.emplace(name, std::move(info)).second) raise(m_fullName + "." + name + " is defined already.");
    }
    void load() {
        if (m_isLoaded) return;
        m_isLoaded = true;
        m_info->loadContents(*this);
    }
    const hos::COSClassInfo* find(const std::string& name) {
        load();
        const auto found = m_classes.find(name);
        return found == m_classes.end() ? nullptr : found->second.get();
    }

private:
    std::unique_ptr<hos::COSNamespaceInfo> m_info;
    std::string m_fullName;
    std::map<std::string, std::unique_ptr<hos::COSClassInfo>> m_classes;
    bool m_isLoaded = false;
};

// By full name. Never destroyed: the library may be unloaded before the program's end.
std::map<std::string, std::unique_ptr<Namespace>>& namespaces() {
    static auto& all = *new std::map<std::string, std::unique_ptr<Namespace>>;
    return all;
}

void add(std::unique_ptr<hos::COSNamespaceInfo> info, const std::string& fullName) {
    auto made = std::make_unique<Namespace>(std::move(info), fullName);
    if (!namespaces().emplace(fullName, std::move(made)).second) raise(fullName + " is defined already.");
}

void Namespace::addInnerNamespace(std::unique_ptr<hos::COSNamespaceInfo> info) {
    const std::string fullName = m_fullName + "." + info->getName();
    add(std::move(info), fullName);
}

Namespace* findNamespace(const std::string& fullName) {
    for (std::size_t dot = fullName.find('.'); dot != std::string::npos; dot = fullName.find('.', dot + 1)) {
        const auto outer = namespaces().find(fullName.substr(0, dot));
        if (outer == namespaces().end()) return nullptr;
        outer->second->load();
    }
    const auto found = namespaces().find(fullName);
    return found == namespaces().end() ? nullptr : found->second.get();
}

}  // namespace

Object::~Object() {
    if (info != nullptr) info->destroyInstance(instance);
}

const hos::COSClassInfo* findClass(const std::string& fullName) {
    const std::size_t dot = fullName.rfind('.');
    Namespace* const holder = dot == std::string::npos ? nullptr : findNamespace(fullName.substr(0, dot));
    return holder ? holder->find(fullName.substr(dot + 1)) : nullptr;
}

HvArrayPtr makeNativeObject(const std::string& fullName, const hos::COSClassInfo& info) {
    const auto object = std::make_shared<hos::COSObject>();
    object->className = fullName;
    object->info = &info;
    object->instance = info.createInstance();
    return HvArrayPtr(omCreateHOSScalar(object));
}

void defineRecordClass(const std::string& fullName, std::vector<std::string> furtherProperties) {
    defineFunction(fullName, [fullName, more = std::move(furtherProperties)](std::span<const hvArray* const> inputs) {
        const auto object = std::make_shared<hos::COSObject>();
        object->className = fullName;
        for (int field = 0; field < hvGetNumberOfFields(inputs[0]); ++field) {
            const char* const name = hvGetFieldNameByNumber(inputs[0], field);
            object->properties.emplace_back(name, HvArrayPtr(hvCreateDeepCopy(hvGetField(inputs[0], 0, name))));
        }
        for (const std::string& name : more) object->properties.emplace_back(name, make(hvDOUBLE_CLASS, {0, 0}));
        std::vector<HvArrayPtr> made;
        made.emplace_back(omCreateHOSScalar(object));
        return made;
    });
}

}  // namespace smallest_platform

using smallest_platform::raise;

hos::ObjectInterface omGetArrayElement(const hvArray* objectArray, std::size_t index) noexcept {
    return objectArray != nullptr && index == 0 ? objectArray->object : nullptr;
}
hvArray* omCreateHOSScalar(const hos::ObjectInterface& object) {
    if (!object) raise("There is no object.");
    HvArrayPtr value = smallest_platform::make(hvOBJECT_CLASS, {1, 1});
    value->object = object;
    return value.release();
}

hvArray* hvGetProperty(const hvArray* object, std::size_t index, const char* name) {
    if (const hos::ObjectInterface element = omGetArrayElement(object, index))
        for (const auto& [property, value] : element->properties)
            if (property == name) return hvCreateDeepCopy(value.get());
    raise(std::string("There is no property ") + name + ".");
}
hvArray* hvGetPropertyShared(const hvArray* object, std::size_t index, const char* name) {
    return hvGetProperty(object, index, name);
}
void hvSetProperty(hvArray* object, std::size_t index, const char* name, const hvArray* value) {
    if (const hos::ObjectInterface element = omGetArrayElement(object, index))
        for (auto& [property, held] : element->properties)
            if (property == name) return held.reset(hvCreateDeepCopy(value));
    raise(std::string("There is no property ") + name + ".");
}

namespace hos {

InternedName internal::makeInterned(std::string_view text) {
    static auto& names = *new std::set<std::string, std::less<>>;
    return text.empty() ? InternedName() : InternedName(&*names.emplace(text).first);
}

void* getNativeInstance(const ObjectInterface& object, InternedName fullClassName) noexcept {
    if (!object || fullClassName.isEmpty() || object->className != *fullClassName.text()) return nullptr;
    return object->instance;
}

// A type is its text here; a platform that converts arguments for scripts knows more of it.
const COSType* COSTypeRepository::getType(InternedName typeText) {
    return reinterpret_cast<const COSType*>(typeText.text());
}

class Signature final : public COSMethodSignature {
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
std::unique_ptr<COSMethodSignature> COSMethodSignature::createMethodSignature() {
    return std::make_unique<Signature>();
}
COSMethodSignature::~COSMethodSignature() = default;

COSNamespace::~COSNamespace() = default;
COSNamespace* COSNamespace::getNamespace(InternedName fullName) {
    return fullName.isEmpty() ? nullptr : smallest_platform::findNamespace(*fullName.text());
}
void COSNamespace::addNamespace(std::unique_ptr<COSNamespaceInfo> info) {
    const std::string name = info->getName();
    smallest_platform::add(std::move(info), name);
}

// ---- defaults of the virtual functions ----

COSPropInfo::~COSPropInfo() = default;
int COSPropInfo::getPartialMatchPriority() const { return 0; }

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
void COSNamespaceInfo::throwErrorForDefinitionOfExistingName(InternedName) const {}
bool COSNamespaceInfo::attemptToLoadClass(COSNamespace&, InternedName) const { return false; }
bool COSNamespaceInfo::attemptToLoadFunction(COSNamespace&, InternedName) const { return false; }
bool COSNamespaceInfo::attemptToLoadType(COSNamespace&, InternedName) const { return false; }
const COSMethodSelector* COSNamespaceInfo::getMethodSelector() const { return nullptr; }
void COSNamespaceInfo::loadContents(COSNamespace&) const {}
bool COSNamespaceInfo::isDestructible() const { return true; }
bool COSNamespaceInfo::isLocked() const { return false; }
bool COSNamespaceInfo::canLoadDynamicContent() const { return false; }

}  // namespace hos
