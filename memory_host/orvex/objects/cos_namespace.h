#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/object_system.h"
#include "memory_host/orvex/objects/cos_class.h"

namespace orvex {

/// A namespace that a library added. Its contents are loaded when something in it is first looked up; an
/// addition looks for the name among them, so that what the contents define is always the first.
class Namespace final : public hos::COSNamespace {
public:
    Namespace(std::unique_ptr<hos::COSNamespaceInfo> info, std::string fullName);

    void addInnerNamespace(std::unique_ptr<hos::COSNamespaceInfo> info) override;
    void addClass(std::unique_ptr<hos::COSClassInfo> info, int access, int mutability) override;

    const std::string& fullName() const noexcept { return m_fullName; }
    /// What is in it, in the order added. All four load the contents first.
    const std::vector<std::unique_ptr<Namespace>>& inner();
    const std::vector<std::shared_ptr<NativeClass>>& classes();
    /// Null when there is none.
    Namespace* findInner(std::string_view name);
    std::shared_ptr<NativeClass> findClass(std::string_view name);

private:
    /// What a load that fails has added is taken back, and the next look-up tries again.
    void ensureContents();

    std::unique_ptr<hos::COSNamespaceInfo> m_info;
    std::string m_fullName;
    std::vector<std::unique_ptr<Namespace>> m_inner;
    std::vector<std::shared_ptr<NativeClass>> m_classes;
    bool m_hasContents = false;
};

/// The native class of that full name with its members defined, or null. Loads the namespaces that the
/// name passes through.
OX_API std::shared_ptr<NativeClass> findNativeClass(std::string_view fullName);
/// All namespaces, each before those inside it. Loads the contents of all.
std::vector<Namespace*> allNamespaces();
/// Destroys all namespaces; their classes live on while objects of them do.
void releaseNamespaces() noexcept;

}  // namespace orvex
