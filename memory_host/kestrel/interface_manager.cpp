#include <algorithm>
#include <memory>
#include <utility>

#include "memory_host/kestrel/host_definitions.h"
#include "memory_host/kestrel/host_side.h"
#include "memory_host/kestrel/host_values.h"
#include "memory_host/kestrel/loaded_models.h"
#include "memory_host/orvex/calls/errors.h"
#include "memory_host/orvex/calls/functions.h"
#include "memory_host/orvex/objects/script_object.h"

// The dashboard layer: the one interface manager, and the dispatcher that is told of events.
namespace kestrel {

namespace {

constexpr const char* kClassName = "Kestrel.HMI.InterfaceMgr";

std::vector<ModelRename> g_renames;
std::vector<HmiEvent> g_events;
// The one manager, which lives while somebody holds it: it has no state of its own.
std::weak_ptr<hos::COSObject> g_manager;

void getInterfaceMgr(orvex::Call& call) {
    requireInputs(call, 0);
    hos::ObjectInterface manager = g_manager.lock();
    if (!manager) manager = std::make_shared<orvex::ScriptObject>(orvex::findScriptClass(kClassName));
    call.outs[0] = HvArrayPtr(omCreateHOSScalar(manager));
    g_manager = manager;
}

// The open model that `oldName` means: a set that was renamed several times before it is validated
// reports each time the name that it was last known by.
std::u16string openNameFor(const std::u16string& oldName) {
    if (loadedModels().find(oldName)) return oldName;
    const auto isAbout = [&](const ModelRename& told) {
        return told.oldName == oldName && loadedModels().find(told.newName);
    };
    const auto told = std::find_if(g_renames.rbegin(), g_renames.rend(), isAbout);
    return told == g_renames.rend() ? oldName : told->newName;
}

// Records the rename and gives the model of the old name its new one, should it still be open under the old.
// Throws the host's exception for a name that no model can have and for one that another open model has.
void renameModel(orvex::Call& call) {
    requireInputs(call, 3);
    orvex::requireScriptObject(call.ins[0], kClassName);
    const ModelRename rename{textOf(call.ins[1]), textOf(call.ins[2])};
    const std::u16string openName = openNameFor(rename.oldName);
    g_renames.push_back(rename);
    try {
        loadedModels().rename(openName, rename.newName);
    } catch (const ModelError& refusal) {
        orvex::raise("BadModelName", refusal.what());
    }
}

void dispatch(orvex::Call& call) {
    requireInputs(call, 2);
    g_events.push_back({textOf(call.ins[0]), textOf(call.ins[1])});
}

}  // namespace

const std::vector<ModelRename>& recordedRenames() noexcept { return g_renames; }
const std::vector<HmiEvent>& recordedEvents() noexcept { return g_events; }

void clearRecords() noexcept {
    g_renames.clear();
    g_events.clear();
}

void defineInterfaceManager() {
    orvex::ScriptClass definition;
    definition.fullName = kClassName;
    definition.methods["renameModel"] = renameModel;
    definition.staticMethods["getInterfaceMgr"] = getInterfaceMgr;
    defineOnce(std::move(definition));
    orvex::defineFunction("Kestrel.HMI.kshmi", dispatch, 0);
}

}  // namespace kestrel
