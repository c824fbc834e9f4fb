#include <memory>

#include "host/object_system.h"

// Another library of the host, which gets to the namespaces first.

namespace {

class NeighbourNamespace final : public hos::COSNamespaceInfo {
public:
    explicit NeighbourNamespace(const char* name) : m_name(name) {}
    const char* getName() const override { return m_name; }

private:
    const char* m_name;
};

}  // namespace

extern "C" __attribute__((visibility("default"))) void OXInitialize_neighbour() {
    hos::COSNamespace::addNamespace(std::make_unique<NeighbourNamespace>("Kestrel"));
    hos::COSNamespace::getNamespace(hos::internal::makeInterned("Kestrel"))
        ->addInnerNamespace(std::make_unique<NeighbourNamespace>("HMI"));
}
