#pragma once

#include <memory>

#include "bindings/instrumented_signals_class.h"
#include "bindings/streaming_clients_class.h"
#include "foundation/zeroed_storage.h"
#include "host/object_system.h"

/// Registration of the library's host classes. Each entry point includes this once.
// Kept: each has a private pair of namespace descriptions in its own unit, and its own flag.
namespace ks_hmi_foundation {
namespace {

constexpr int kClassAccess = hos::kPublicAccess;
// The object system's own code, passed through as it stands.
constexpr int kClassMutability = 2;

void addClasses(hos::COSNamespace& hostNamespace) {
    hostNamespace.addClass(std::make_unique<InstrumentedSignalsCOSClassInfo>(), kClassAccess, kClassMutability);
    hostNamespace.addClass(std::make_unique<StreamingClientsCOSClassInfo>(), kClassAccess, kClassMutability);
}

class HMIHOSNamespaceInfo final : public hos::COSNamespaceInfo, public ZeroedStorage {
public:
    const char* getName() const override { return "HMI"; }
    void loadContents(hos::COSNamespace& hostNamespace) const override { addClasses(hostNamespace); }
};

class KESTRELHOSNamespaceInfo final : public hos::COSNamespaceInfo, public ZeroedStorage {
public:
    const char* getName() const override { return "Kestrel"; }
    void loadContents(hos::COSNamespace& hostNamespace) const override {
        hostNamespace.addInnerNamespace(std::make_unique<HMIHOSNamespaceInfo>());
    }
};

hos::COSNamespace* findNamespace(const char* fullName) {
    return hos::COSNamespace::getNamespace(hos::internal::makeInterned(fullName));
}

/// Registers on the first call with `isRegistered` still false; a failure is not retried.
void registerHostClassesOnce(bool& isRegistered) {
    if (isRegistered) return;
    isRegistered = true;
    hos::COSNamespace* const kestrel = findNamespace("Kestrel");
    if (kestrel == nullptr) {
        // Kept: the rest arrives when the host first loads the new namespace's contents.
        hos::COSNamespace::addNamespace(std::make_unique<KESTRELHOSNamespaceInfo>());
        return;
    }
    hos::COSNamespace* const hmi = findNamespace("Kestrel.HMI");
    if (hmi == nullptr) {
        kestrel->addInnerNamespace(std::make_unique<HMIHOSNamespaceInfo>());
        return;
    }
    addClasses(*hmi);
}

}  // namespace
}  // namespace ks_hmi_foundation
