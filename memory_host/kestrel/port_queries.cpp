#include <algorithm>
#include <array>
#include <string>
#include <utility>
#include <vector>

#include "memory_host/kestrel/alignment.h"
#include "memory_host/kestrel/host_definitions.h"
#include "memory_host/kestrel/host_values.h"
#include "memory_host/kestrel/set_elements.h"
#include "memory_host/kestrel/signal_lookup.h"
#include "memory_host/orvex/calls/errors.h"
#include "memory_host/orvex/calls/functions.h"
#include "memory_host/orvex/objects/script_object.h"

// What an editor asks of a model as a whole: its observed ports, and the blocks that carry badges.
namespace kestrel {

namespace {

constexpr const char* kModelClass = "Kestrel.Model";

// One observed port with the signal that observes it and what its block was when the signal was read: a script that
// is called for the next signal may unload the model.
struct ObservedPort {
    HvArrayPtr signal;
    double blockHandle;
    std::u16string fullPath;
};

bool flagProperty(const hvArray* object, const char* name) { return numberProperty(object, name) != 0.0; }

// The model's set, or null while it has none; a value of its own, which outlives the model.
HvArrayPtr requireSignals(const hvArray* modelObject) {
    const std::u16string name = textOf(orvex::requireScriptObject(modelObject, kModelClass).stored("Name"));
    if (!loadedModels().find(name)) orvex::raise("ModelNotOpen", "No model named " + quoted(name) + " is open.");
    return signalsOf(name);
}

// Gives the port signals of the model's set whose block is in an open model to `take`, in the set's order, each with
// its block.
template <class Take>
void forEachObservedPort(const hvArray* modelObject, Take take) {
    const HvArrayPtr signals = requireSignals(modelObject);
    for (const SetElement element : elementsOf(signals.get())) {
        HvArrayPtr signal = element.get();
        if (isOnChart(signal.get())) continue;
        if (const LoadedBlock found = signalBlock(signal.get())) take(std::move(signal), found);
    }
}

std::vector<ObservedPort> observedPorts(const hvArray* modelObject) {
    std::vector<ObservedPort> ports;
    forEachObservedPort(modelObject, [&](HvArrayPtr signal, const LoadedBlock& found) {
        ports.push_back({std::move(signal), found.block->handle, found.owner->model().fullPath(*found.block)});
    });
    return ports;
}

bool isAtOrBelow(std::u16string_view path, std::u16string_view parent) {
    return parent.empty() || path == parent ||
           (path.starts_with(parent) && path.size() > parent.size() && path[parent.size()] == u'/');
}

template <class Text>
HvArrayPtr textColumn(const std::vector<ObservedPort>& ports, Text text) {
    const std::size_t count = ports.size();
    HvArrayPtr column(hvCreateCellArray(1, &count));
    for (std::size_t i = 0; i < count; ++i) hvSetCell(column.get(), i, makeText(text(ports[i])).release());
    return column;
}

template <class Number>
HvArrayPtr numberColumn(const std::vector<ObservedPort>& ports, Number number) {
    HvArrayPtr column(hvCreateNumericMatrix(ports.size(), 1, hvDOUBLE_CLASS, hvREAL));
    auto* data = static_cast<double*>(hvGetDataForWriting(column.get()));
    for (const ObservedPort& port : ports) *data++ = number(port);
    return column;
}

HvArrayPtr textColumn(const std::vector<ObservedPort>& ports, const char* property) {
    return textColumn(ports, [&](const ObservedPort& port) { return textProperty(port.signal.get(), property); });
}

HvArrayPtr numberColumn(const std::vector<ObservedPort>& ports, const char* property) {
    return numberColumn(ports, [&](const ObservedPort& port) { return numberProperty(port.signal.get(), property); });
}

// Leaves what the five arguments of "getObservedPorts" ask for.
void filter(std::vector<ObservedPort>& ports, const orvex::Call& call) {
    const std::u16string below = textOf(call.ins[1]);
    const std::u16string visualType = textOf(call.ins[2]);
    const bool withHidden = truthAt(call, 3);
    const bool withUnsaved = truthAt(call, 4);
    std::erase_if(ports, [&](const ObservedPort& port) {
        const hvArray* signal = port.signal.get();
        return !isAtOrBelow(port.fullPath, below) ||
               (!visualType.empty() && textProperty(signal, "VisualType_") != visualType) ||
               (!withHidden && flagProperty(signal, "HideInPLV_")) ||
               (!withUnsaved && flagProperty(signal, "ExcludeForSave_"));
    });
}

void getObservedPorts(orvex::Call& call) {
    requireInputs(call, 5);
    std::vector<ObservedPort> ports = observedPorts(call.ins[0]);
    filter(ports, call);
    std::array<HvArrayPtr, 10> results = {
        textColumn(ports, "UUID"),
        numberColumn(ports, [](const ObservedPort& port) { return port.blockHandle; }),
        numberColumn(ports, "OutputPortIndex_"),
        numberColumn(ports, "Decimation_"),
        numberColumn(ports, "MaxPoints_"),
        numberColumn(ports, "IsFrameBased_"),
        numberColumn(ports, "TargetBufferedStreaming_"),
        textColumn(ports, "SignalName_"),
        numberColumn(ports, "HideInPLV_"),
        textColumn(ports, [](const ObservedPort& port) { return port.fullPath; }),
    };
    std::move(results.begin(),
              results.begin() + static_cast<std::ptrdiff_t>(std::min(results.size(), call.outs.size())),
              call.outs.begin());
}

void getPortsWithBadges(orvex::Call& call) {
    requireInputs(call, 1);
    std::vector<double> handles;
    // The signals are let go one by one: as objects, all of a large model are many.
    forEachObservedPort(call.ins[0], [&](const HvArrayPtr&, const LoadedBlock& found) {
        if (handles.empty() || handles.back() != found.block->handle) handles.push_back(found.block->handle);
    });
    std::sort(handles.begin(), handles.end());
    handles.erase(std::unique(handles.begin(), handles.end()), handles.end());
    HvArrayPtr row(hvCreateNumericMatrix(1, handles.size(), hvDOUBLE_CLASS, hvREAL));
    std::copy(handles.begin(), handles.end(), static_cast<double*>(hvGetDataForWriting(row.get())));
    call.outs[0] = std::move(row);
}

void constructModel(orvex::ScriptObject& self, std::span<const hvArray* const> arguments) {
    const std::u16string name = arguments.size() == 1 ? textOf(arguments[0]) : std::u16string();
    if (!loadedModels().find(name))
        orvex::raise("ModelNotOpen", std::string("The constructor of class ") + kModelClass +
                                         " takes the name of an open model; no model named " + quoted(name) +
                                         " is open.");
    self.store("Name", makeText(name));
}

}  // namespace

void definePortQueries() {
    orvex::ScriptClass definition;
    definition.fullName = kModelClass;
    definition.properties = {{"Name", emptyText, false}};
    definition.construct = constructModel;
    defineOnce(std::move(definition));
    orvex::defineFunction("getObservedPorts", getObservedPorts, 10);
    orvex::defineFunction("getPortsWithBadges", getPortsWithBadges, 1);
}

}  // namespace kestrel
