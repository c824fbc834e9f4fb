#include "memory_host/kestrel/host_definitions.h"
#include "memory_host/kestrel/host_values.h"
#include "memory_host/kestrel/signal_lookup.h"
#include "memory_host/orvex/objects/script_object.h"

// The host class that shows one observer of a signal.
namespace kestrel {

namespace {

// So many of the properties, the first ones, are saved.
constexpr std::size_t kSaved = 11;

HvArrayPtr one() { return makeUint32(1); }
HvArrayPtr no() { return makeLogical(false); }

// The object of the observed signal; a 0x0 double when no open model that the client names has it.
HvArrayPtr signalInfo(const orvex::ScriptObject& self) {
    HvArrayPtr signal = findSignal(modelsOfClient(self), textOf(self.stored("SignalUUID_")));
    return signal ? std::move(signal) : makeEmpty();
}

std::vector<orvex::ScriptProperty> properties() {
    return {
        {"UUID", emptyText},
        {"ModelPath_", makeEmptyCell},
        {"ModelPathEID_", makeEmptyCell},
        {"SourceModel_", emptyText},
        {"SignalUUID_", emptyText},
        {"ObserverType_", emptyText},
        {"ObserverParams_", makeEmpty},
        {"UpdateRate_", one},
        {"DimensionChannel_", one},
        {"ObserveImaginaryPart_", no},
        {"BusLeafPath_", emptyText},
        {"SignalInfo", {}, false, signalInfo},
    };
}

void construct(orvex::ScriptObject& self, std::span<const hvArray* const> arguments) {
    constructFromStruct(self, arguments, kSaved);
}

}  // namespace

void defineSignalClient() {
    orvex::ScriptClass definition;
    definition.fullName = kSignalClientClass;
    definition.properties = properties();
    definition.construct = construct;
    defineOnce(std::move(definition));
}

}  // namespace kestrel
