#include "memory_host/kestrel/host_definitions.h"
#include "memory_host/kestrel/host_values.h"
#include "memory_host/orvex/calls/call.h"
#include "memory_host/orvex/calls/errors.h"
#include "memory_host/orvex/objects/script_object.h"
#include "memory_host/orvex/values/values.h"

// The host class that bundles a model's signals with their observers.
namespace kestrel {

namespace {

constexpr const char* kClassName = "Kestrel.HMI.ModelObservers";

void checkPart(const hvArray* part, const char* className) {
    if (hvIsEmpty(part) || (hvGetNumberOfElements(part) == 1 && hvIsA(part, className))) return;
    orvex::raise("TypeMismatch", std::string("A bundle of class ") + kClassName +
                                     " takes an empty value or one object of class " + className + ", and " +
                                     orvex::describeValue(part) + " was given.");
}

void construct(orvex::ScriptObject& self, std::span<const hvArray* const> arguments) {
    if (arguments.empty()) return;
    if (arguments.size() != 2)
        orvex::raise("WrongNumberOfInputs",
                     std::string("The constructor of class ") + kClassName + " takes signals and clients, or nothing.");
    checkPart(arguments[0], "Kestrel.HMI.InstrumentedSignals");
    checkPart(arguments[1], "Kestrel.HMI.StreamingClients");
    self.store("Signals", HvArrayPtr(hvCreateSharedDataCopy(arguments[0])));
    self.store("Clients", HvArrayPtr(hvCreateSharedDataCopy(arguments[1])));
}

void getSignalsAndClients(orvex::Call& call) {
    requireInputs(call, 1);
    const orvex::ScriptObject& self = orvex::requireScriptObject(call.ins[0], kClassName);
    call.outs[0] = self.getProperty("Signals");
    if (call.outs.size() > 1) call.outs[1] = self.getProperty("Clients");
}

void createFromSignalsAndClients(orvex::Call& call) {
    requireInputs(call, 2);
    call.outs[0] = callForOne(kClassName, {call.ins[0], call.ins[1]});
}

}  // namespace

void defineModelObservers() {
    orvex::ScriptClass definition;
    definition.fullName = kClassName;
    definition.properties = {{"Signals", makeEmpty, false}, {"Clients", makeEmpty, false}};
    definition.construct = construct;
    definition.methods["getSignalsAndClients"] = getSignalsAndClients;
    definition.staticMethods["createFromSignalsAndClients"] = createFromSignalsAndClients;
    defineOnce(std::move(definition));
}

}  // namespace kestrel
