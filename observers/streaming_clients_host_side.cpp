#include "foundation/host_call.h"
#include "foundation/host_value.h"
#include "foundation/native_object.h"
#include "observers/streaming_clients.h"

namespace ks_hmi {

using namespace ks_hmi_foundation;

namespace {

hos::InternedName clientsClassName() {
    static const hos::InternedName name = hos::internal::makeInterned(StreamingClients::kHostClass);
    return name;
}

HvArrayPtr scalarObject(const hvArray* objects, std::size_t index) {
    return HvArrayPtr(omCreateHOSScalar(omGetArrayElement(objects, index)));
}

}  // namespace

HvArrayPtr StreamingClients::copy() const {
    HvArrayPtr object = std::move(callHost<1>(kHostClass, {})[0]);
    auto& other = requireNativeObject<StreamingClients>(object.get(), kHostClass);
    // Copying parameters may run scripts, which may change this set: a snapshot is cloned.
    std::vector<ClientPtr> clones = m_clients;
    for (ClientPtr& client : clones) client = client->clone();
    other.m_modelName = m_modelName;
    other.m_knownModelName = m_knownModelName;
    other.m_clients.swap(clones);
    return object;
}

bool StreamingClients::isValidType(const hvArray* value) { return isNoneOrOneOf(value, kHostClass); }

StreamingClients* StreamingClients::getFromHvArray(const hvArray* value) {
    return nativeObject<StreamingClients>(value, clientsClassName());
}

void StreamingClients::validateAndRemoveUnused(const hvArray* value) {
    StreamingClients* const clients = getFromHvArray(value);
    if (clients == nullptr) return;
    clients->m_knownModelName = clients->m_modelName;
    tryCallHost<0>("validateAndRemoveUnused", {value});
}

void StreamingClients::handleModelRename(const hvArray* value) {
    const StreamingClients* const clients = getFromHvArray(value);
    if (clients == nullptr || clients->m_knownModelName == clients->m_modelName) return;
    const HvArrayPtr oldName = makeText(clients->m_knownModelName);
    const HvArrayPtr newName = makeText(clients->m_modelName);
    const auto manager = tryCallHost<1>("Kestrel.HMI.InterfaceMgr.getInterfaceMgr", {});
    if (!manager || !(*manager)[0]) return;
    // Kept: the known name stays; it catches up when the set is validated.
    tryCallHost<0>("renameModel", {(*manager)[0].get(), oldName.get(), newName.get()});
}

void StreamingClients::getAlignedObservers(const hvArray* value, std::vector<ClientPtr>& out) {
    out.clear();
    const hos::ObjectInterface held = heldObject(value);
    const auto* const clients = static_cast<StreamingClients*>(hos::getNativeInstance(held, clientsClassName()));
    if (clients == nullptr) return;
    const auto result = tryCallHost<1>("getAlignedObservers", {value});
    if (!result) return;
    const hvArray* const observers = (*result)[0].get();
    const std::u16string modelName = clients->m_modelName;
    std::vector<ClientPtr> aligned(hvGetNumberOfElements(observers));
    for (std::size_t i = 0; i < aligned.size(); ++i) {
        aligned[i] = std::make_unique<SignalClient>(scalarObject(observers, i).get(), 0, modelName);
    }
    out.swap(aligned);
}

}  // namespace ks_hmi
