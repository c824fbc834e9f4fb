#include "memory_host/kestrel/alignment.h"
#include "memory_host/kestrel/host_definitions.h"
#include "memory_host/kestrel/host_values.h"
#include "memory_host/orvex/calls/call.h"
#include "memory_host/orvex/objects/script_object.h"

// The host class that shows one signal.
namespace kestrel {

namespace {

constexpr const char* kClassName = "Kestrel.HMI.SignalSpecification";

// So many of the properties, the first ones, are saved.
constexpr std::size_t kSaved = 16;

HvArrayPtr zero() { return makeDouble(0.0); }
HvArrayPtr one() { return makeDouble(1.0); }
HvArrayPtr no() { return makeLogical(false); }

HvArrayPtr noParameters() {
    constexpr std::size_t kDimensions[] = {1, 1};
    return HvArrayPtr(hvCreateStructArray(2, kDimensions, 0, nullptr));
}

std::vector<orvex::ScriptProperty> properties() {
    return {
        {"UUID", emptyText},
        {"BlockPath_", emptyText},
        {"EID_", emptyText},
        {"SubPath_", emptyText},
        {"OutputPortIndex_", zero},
        {"LogicalPortIndex_", zero},
        {"SignalName_", emptyText},
        {"SubSysPath_", emptyText},
        {"Decimation_", one},
        {"MaxPoints_", zero},
        {"TargetBufferedStreaming_", zero},
        {"IsFrameBased_", zero},
        {"HideInPLV_", zero},
        {"DomainType_", emptyText},
        {"DomainParams_", noParameters},
        {"VisualType_", emptyText},
        {"BindingRule_", emptyText},
        {"CachedBlockHandle_", makeEmpty},
        {"CachedPortIdx_", makeEmpty},
        {"ExcludeForSave_", no},
    };
}

void construct(orvex::ScriptObject& self, std::span<const hvArray* const> arguments) {
    constructFromStruct(self, arguments, kSaved);
}

void getAlignedBlockPath(orvex::Call& call) {
    requireInputs(call, 1);
    const orvex::ScriptObject& self = orvex::requireScriptObject(call.ins[0], kClassName);
    const std::string eid = utf8TextOf(self.stored("EID_"));
    const LoadedBlock found = requireBlock(eid, eid.empty() ? textOf(self.stored("BlockPath_")) : std::u16string());
    call.outs[0] = makeText(found.owner->model().fullPath(*found.block));
}

}  // namespace

void defineSignalSpecification() {
    orvex::ScriptClass definition;
    definition.fullName = kClassName;
    definition.properties = properties();
    definition.construct = construct;
    definition.methods["getAlignedBlockPath"] = getAlignedBlockPath;
    defineOnce(std::move(definition));
}

}  // namespace kestrel
