#include "memory_host/orvex/objects/cos_namespace.h"

#include <typeinfo>
#include <utility>

#include "memory_host/orvex/calls/errors.h"
#include "memory_host/orvex/objects/dotted_name.h"
#include "memory_host/orvex/objects/pinned_libraries.h"
#include "memory_host/orvex/objects/script_class.h"

namespace orvex {

namespace {

using Namespaces = std::vector<std::unique_ptr<Namespace>>;

// Never destroyed: at the end of the process the code of the info objects may be gone already.
Namespaces& topLevel() {
    static auto& namespaces = *new Namespaces;
    return namespaces;
}

Namespace* findIn(const Namespaces& namespaces, std::string_view name) {
    for (const auto& candidate : namespaces)
        if (lastPart(candidate->fullName()) == name) return candidate.get();
    return nullptr;
}

Namespace* findNamespace(std::string_view fullName) {
    std::size_t dot = fullName.find('.');
    Namespace* found = findIn(topLevel(), fullName.substr(0, dot));
    while (found && dot != std::string_view::npos) {
        fullName.remove_prefix(dot + 1);
        dot = fullName.find('.');
        found = found->findInner(fullName.substr(0, dot));
    }
    return found;
}

[[noreturn]] void refuseExisting(const hos::COSNamespaceInfo& info, const std::string& fullName) {
    info.throwErrorForDefinitionOfExistingName(hos::internal::makeInterned(fullName));
    raise("NameExists", "\"" + fullName + "\" is defined already; the first definition stays.");
}

template <class Info>
std::string requireName(const std::unique_ptr<Info>& info, const char* what) {
    const char* name = info ? info->getName() : nullptr;
    if (!name || !*name) raise("MissingName", std::string("A ") + what + " without a name cannot be added.");
    return name;
}

// What describes a class or namespace is code of the library that made it.
template <class Info>
void keepCodeOf(const Info& info) {
    pinLibraryOf(&typeid(info));
}

}  // namespace

Namespace::Namespace(std::unique_ptr<hos::COSNamespaceInfo> info, std::string fullName)
    : m_info(std::move(info)), m_fullName(std::move(fullName)) {}

void Namespace::addInnerNamespace(std::unique_ptr<hos::COSNamespaceInfo> info) {
    const std::string name = requireName(info, "namespace");
    const std::string innerName = m_fullName + "." + name;
    ensureContents();
    if (findIn(m_inner, name)) refuseExisting(*m_info, innerName);
    keepCodeOf(*info);
    m_inner.push_back(std::make_unique<Namespace>(std::move(info), innerName));
}

void Namespace::addClass(std::unique_ptr<hos::COSClassInfo> info, int, int) {
    const std::string className = m_fullName + "." + requireName(info, "class");
    ensureContents();
    for (const auto& existing : m_classes)
        if (existing->fullName() == className) refuseExisting(*m_info, className);
    if (findScriptClass(className)) refuseExisting(*m_info, className);
    keepCodeOf(*info);
    m_classes.push_back(std::make_shared<NativeClass>(std::move(info), className));
}

const std::vector<std::unique_ptr<Namespace>>& Namespace::inner() {
    ensureContents();
    return m_inner;
}

const std::vector<std::shared_ptr<NativeClass>>& Namespace::classes() {
    ensureContents();
    return m_classes;
}

Namespace* Namespace::findInner(std::string_view name) { return findIn(inner(), name); }

std::shared_ptr<NativeClass> Namespace::findClass(std::string_view name) {
    for (const auto& candidate : classes())
        if (lastPart(candidate->fullName()) == name) return candidate;
    return nullptr;
}

void Namespace::ensureContents() {
    if (m_hasContents) return;
    m_hasContents = true;
    const auto innerBefore = static_cast<std::ptrdiff_t>(m_inner.size());
    const auto classesBefore = static_cast<std::ptrdiff_t>(m_classes.size());
    try {
        m_info->loadContents(*this);
    } catch (...) {
        m_inner.erase(m_inner.begin() + innerBefore, m_inner.end());
        m_classes.erase(m_classes.begin() + classesBefore, m_classes.end());
        m_hasContents = false;
        throw;
    }
}

std::shared_ptr<NativeClass> findNativeClass(std::string_view fullName) {
    const std::size_t dot = fullName.rfind('.');
    if (dot == std::string_view::npos) return nullptr;
    Namespace* holder = findNamespace(fullName.substr(0, dot));
    if (!holder) return nullptr;
    std::shared_ptr<NativeClass> found = holder->findClass(fullName.substr(dot + 1));
    if (found) found->ensureMembers();
    return found;
}

std::vector<Namespace*> allNamespaces() {
    std::vector<Namespace*> all;
    for (const auto& one : topLevel()) all.push_back(one.get());
    // Those inside one are put behind it, and come up in their turn.
    for (std::size_t at = 0; at < all.size(); ++at) {
        std::vector<Namespace*> inside;
        for (const auto& one : all[at]->inner()) inside.push_back(one.get());
        all.insert(all.begin() + static_cast<std::ptrdiff_t>(at) + 1, inside.begin(), inside.end());
    }
    return all;
}

void releaseNamespaces() noexcept { topLevel().clear(); }

}  // namespace orvex

namespace hos {

COSNamespace* COSNamespace::getNamespace(InternedName fullName) {
    return fullName.isEmpty() ? nullptr : orvex::findNamespace(*fullName.text());
}

void COSNamespace::addNamespace(std::unique_ptr<COSNamespaceInfo> info) {
    const std::string name = orvex::requireName(info, "namespace");
    if (orvex::findIn(orvex::topLevel(), name)) orvex::refuseExisting(*info, name);
    orvex::keepCodeOf(*info);
    orvex::topLevel().push_back(std::make_unique<orvex::Namespace>(std::move(info), name));
}

}  // namespace hos
