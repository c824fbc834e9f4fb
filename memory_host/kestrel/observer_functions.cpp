#include <algorithm>
#include <map>
#include <set>
#include <utility>

#include "memory_host/kestrel/alignment.h"
#include "memory_host/kestrel/host_definitions.h"
#include "memory_host/kestrel/host_values.h"
#include "memory_host/kestrel/set_elements.h"
#include "memory_host/kestrel/signal_lookup.h"
#include "memory_host/orvex/calls/call_by_name.h"
#include "memory_host/orvex/calls/functions.h"
#include "memory_host/orvex/values/values.h"

// What a set of observers asks of the modelling side.
namespace kestrel {

namespace {

// The UUIDs of the open models' signals, read once a model.
class SignalUuids {
public:
    bool has(const std::u16string& modelName, const std::u16string& uuid) {
        auto known = m_uuids.find(modelName);
        if (known == m_uuids.end()) {
            const std::vector<std::u16string> uuids = signalUuids(signalsOf(modelName).get());
            known = m_uuids.emplace(modelName, std::set<std::u16string>(uuids.begin(), uuids.end())).first;
        }
        return known->second.contains(uuid);
    }

private:
    std::map<std::u16string, std::set<std::u16string>> m_uuids;
};

// Gone for certain: every model that the client names is open, and none has the signal.
bool isSignalGone(const hvArray* client, SignalUuids& uuids) {
    const std::vector<std::u16string> names = modelsOfClient(*omGetArrayElement(client, 0));
    const std::u16string uuid = textProperty(client, "SignalUUID_");
    return std::all_of(names.begin(), names.end(),
                       [&](const std::u16string& name) { return loadedModels().find(name) && !uuids.has(name, uuid); });
}

bool isDeprecated(const hvArray* client) { return textProperty(client, "ObserverType_") == u"hmi_web_widget_observer"; }

// Removes the clients of a deprecated kind and those whose signal is gone, from the last to the first.
void validateAndRemoveUnused(orvex::Call& call) {
    requireInputs(call, 1);
    const hvArray* clients = call.ins[0];
    SignalUuids uuids;
    for (const SetElement element : elementsFromLast(clients)) {
        const HvArrayPtr client = element.get();
        if (!hvIsA(client.get(), kSignalClientClass)) continue;
        if (!isDeprecated(client.get()) && !isSignalGone(client.get(), uuids)) continue;
        const hvArray* ins[] = {clients, element.position()};
        orvex::callByName("remove", ins, 0);
    }
}

// The elements of the model path as their blocks are now; one whose block is not found stays as it is.
HvArrayPtr alignedModelPath(const hvArray* client) {
    const HvArrayPtr path(hvGetPropertyShared(client, 0, "ModelPath_"));
    const HvArrayPtr eids(hvGetPropertyShared(client, 0, "ModelPathEID_"));
    const std::size_t count = hvGetNumberOfElements(path.get());
    HvArrayPtr aligned(hvCreateCellArray(1, &count));
    for (std::size_t i = 0; i < count; ++i) {
        const LoadedBlock found = findByFullEid(utf8TextOf(hvGetCell(eids.get(), i)));
        const std::u16string text =
            found ? found.owner->model().fullPath(*found.block) : textOf(hvGetCell(path.get(), i));
        hvSetCell(aligned.get(), i, makeText(text).release());
    }
    return aligned;
}

// The clients as an N x 1 object array, in order, with aligned model paths. A client whose object was
// refused is left out.
void getAlignedObservers(orvex::Call& call) {
    requireInputs(call, 1);
    orvex::Objects aligned;
    for (const SetElement element : elementsOf(call.ins[0])) {
        const HvArrayPtr client = element.get();
        if (!hvIsA(client.get(), kSignalClientClass)) continue;
        hvSetProperty(client.get(), 0, "ModelPath_", alignedModelPath(client.get()).get());
        aligned.push_back(omGetArrayElement(client.get(), 0));
    }
    call.outs[0] = orvex::makeObjectColumn(std::move(aligned));
}

}  // namespace

void defineObserverFunctions() {
    orvex::defineFunction("validateAndRemoveUnused", validateAndRemoveUnused, 0);
    orvex::defineFunction("getAlignedObservers", getAlignedObservers, 1);
}

}  // namespace kestrel
