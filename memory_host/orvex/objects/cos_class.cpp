#include "memory_host/orvex/objects/cos_class.h"

#include <algorithm>
#include <utility>

#include "memory_host/orvex/calls/errors.h"
#include "memory_host/orvex/objects/dotted_name.h"

namespace orvex {

namespace {

template <class Member>
const Member* memberNamed(const std::vector<std::unique_ptr<Member>>& members, std::string_view name) {
    const auto hasName = [&](const auto& member) {
        const hos::InternedName own = member->getName();
        return !own.isEmpty() && *own.text() == name;
    };
    const auto found = std::find_if(members.begin(), members.end(), hasName);
    return found == members.end() ? nullptr : found->get();
}

template <class Member>
void addMember(std::vector<std::unique_ptr<Member>>& members, std::unique_ptr<Member> member, const char* kind,
               const std::string& className) {
    if (!member || member->getName().isEmpty())
        raise("MemberWithoutName", std::string("A ") + kind + " of class " + className + " has no name.");
    const std::string& name = *member->getName().text();
    if (memberNamed(members, name))
        raise("NameExists",
              "Class " + className + " has a " + kind + " \"" + name + "\" already; the first one stays.");
    members.push_back(std::move(member));
}

}  // namespace

NativeClass::NativeClass(std::unique_ptr<hos::COSClassInfo> info, std::string fullName)
    : m_info(std::move(info)), m_fullName(std::move(fullName)), m_shortName(lastPart(m_fullName)) {}

void NativeClass::addProperty(std::unique_ptr<hos::COSPropInfo> property) {
    addMember(m_properties, std::move(property), "property", m_fullName);
}

void NativeClass::addMethod(std::unique_ptr<hos::COSMethodInfo> method) {
    addMember(m_methods, std::move(method), "method", m_fullName);
}

void NativeClass::ensureMembers() {
    if (m_hasMembers) return;
    m_hasMembers = true;
    try {
        m_info->defineMembers(*this);
    } catch (...) {
        m_properties.clear();
        m_methods.clear();
        m_hasMembers = false;
        throw;
    }
}

const hos::COSPropInfo* NativeClass::findProperty(std::string_view name) const {
    return memberNamed(m_properties, name);
}

const hos::COSMethodInfo* NativeClass::findMethod(std::string_view name) const {
    return name == m_shortName ? nullptr : memberNamed(m_methods, name);
}

const hos::COSMethodInfo* NativeClass::constructor() const { return memberNamed(m_methods, m_shortName); }

NativeObject::NativeObject(std::shared_ptr<const NativeClass> nativeClass)
    : COSObject("creating an object"), m_class(std::move(nativeClass)), m_instance(m_class->info().createInstance()) {}

NativeObject::~NativeObject() { m_class->info().destroyInstance(m_instance); }

void* NativeObject::nativeInstance(std::string_view fullClassName) const noexcept {
    return isA(fullClassName) ? m_instance : nullptr;
}

}  // namespace orvex
