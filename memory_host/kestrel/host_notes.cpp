#include <span>
#include <string>

#include "memory_host/kestrel/host_definitions.h"
#include "memory_host/orvex/objects/notes.h"
#include "memory_host/orvex/objects/notes_table.h"

// What is said of the classes and functions, as a script author reads it.
namespace kestrel {

namespace {

struct Row {
    const char* about;
    const char* sentence;
    const char* inputs = "";
    const char* outputs = "";
};

// Of one class, members without its name; the class itself has an empty one.
void noteAll(const std::string& className, std::span<const Row> rows) {
    for (const Row& row : rows)
        orvex::note(*row.about ? className + "." + row.about : className, {row.sentence, row.inputs, row.outputs});
}

constexpr Row kInstrumentedSignals[] = {
    {"", "The signals of one model: which of its ports and chart items are observed, in an order of their own."},
    {"Model", "Name of the model that the signals belong to."},
    {"Count", "How many signals there are."},
    {"Persistence", "The signals as a struct array, as models are saved with; assigning one appends its signals."},
    {"InstrumentedSignals", "An empty set, for the model of that name.", "modelName", "signals"},
    {"add", "Appends the signal.", "signals, signal"},
    {"set", "Puts the signal in place of the one at the position, which counts from 1.", "signals, position, signal"},
    {"remove", "Removes the signal at the position, which counts from 1; those behind it close up.",
     "signals, position"},
    {"get", "The signal at the position, which counts from 1: an object, or a struct when that is asked for.",
     "signals, position, asStruct", "signal"},
    {"isPortObserved", "Whether the signal's port is observed, looked up by block handle, else by path.",
     "signals, signal", "isObserved"},
    {"isGivenCWActivityObserved",
     "Whether the activity (\"Self\", \"Child\", \"Leaf\" or \"Data\") of that item of a chart is observed; item 0 is "
     "the chart itself.",
     "signals, chartIdentifier, item, activity", "isObserved"},
    {"isAnyCWActivityObserved", "Whether any activity of that item of a chart is observed; item 0 is the chart itself.",
     "signals, chartIdentifier, item", "isObserved"},
    {"isGivenPortObserved", "Whether the block's port, which counts from 1, is observed.", "signals, blockHandle, port",
     "isObserved"},
    {"setUUIDForBlock", "Says which UUID a signal on the block's port is to have.", "blockHandle, port, uuid"},
    {"getUUIDForBlock",
     "The UUID that a signal on the block's port is to have, made on first asking; a fresh one each time without "
     "\"keep\".",
     "blockHandle, port, keep", "uuid"},
    {"getUUID", "The UUID of the signal at the position, which counts from 1.", "signals, position", "uuid"},
};

constexpr Row kStreamingClients[] = {
    {"", "The clients of one model: who observes its signals, in an order of their own."},
    {"Model", "Name of the model that the clients belong to; assigning it renames the set and its clients."},
    {"Count", "How many clients there are."},
    {"Persistence", "The clients as a struct array, as models are saved with; assigning one appends its clients."},
    {"StreamingClients", "An empty set, for the model of that name.", "modelName", "clients"},
    {"add", "Appends the client.", "clients, client"},
    {"set", "Puts the client in place of the one at the position, which counts from 1.", "clients, position, client"},
    {"remove", "Removes the client at the position, which counts from 1; those behind it close up.",
     "clients, position"},
    {"get", "The client at the position, which counts from 1, as an object.", "clients, position", "client"},
};

constexpr Row kSignalSpecification[] = {
    {"", "One signal: a block's output port, or a chart's state, activity or datum, that is observed."},
    {"SignalSpecification", "A signal with initial values, or one read from a 1x1 struct that has all saved fields.",
     "[record]", "signal: Kestrel.HMI.SignalSpecification"},
    {"getAlignedBlockPath",
     "The block's full path as it is now; fails when its model is not open or the block is gone.",
     "signal: Kestrel.HMI.SignalSpecification", "path"},
    {"UUID", "What clients name the signal by."},
    {"BlockPath_", "Path of the block, with the model's name in front."},
    {"EID_", "Element identifier of the block, with the model's name in front; it stays with the block."},
    {"SubPath_", "Path below the block, such as inside a chart."},
    {"OutputPortIndex_", "Number of the output port, from 1; 0 for none."},
    {"LogicalPortIndex_", "Number of the port as it is looked up, from 1; 0 when that is the output port's."},
    {"SignalName_", "Name of the signal, as shown."},
    {"SubSysPath_", "Path of the subsystem around the block."},
    {"Decimation_", "Every n-th sample is kept."},
    {"MaxPoints_", "Most points to keep; 0 for no limit."},
    {"TargetBufferedStreaming_", "Whether the target buffers the stream."},
    {"IsFrameBased_", "Whether the samples come in frames."},
    {"HideInPLV_", "Whether the signal viewer leaves the signal out."},
    {"DomainType_", "Kind of source: empty for an output port, \"cw_chart\", \"cw_state\" or \"cw_data\" for a chart."},
    {"DomainParams_", "What belongs to the kind of source, such as \"SSID\" and \"Activity\" of a chart."},
    {"VisualType_", "Kind of display that the signal feeds."},
    {"BindingRule_", "How the block was found: by \"eid\", by \"path\", or not yet; not saved."},
    {"CachedBlockHandle_", "Handle of the block while the model is open; not saved."},
    {"CachedPortIdx_", "Port that goes with the handle; not saved."},
    {"ExcludeForSave_", "Whether the signal is left out when the model is saved; not saved itself."},
};

constexpr Row kSignalClient[] = {
    {"", "One client: a display or logger that observes a signal."},
    {"SignalClient", "A client with initial values, or one read from a 1x1 struct that has all saved fields.",
     "[record]", "client: Kestrel.HMI.SignalClient"},
    {"UUID", "The client's own UUID."},
    {"ModelPath_", "Way through the models to the block, one path each; the first has the model's name in front."},
    {"ModelPathEID_", "Element identifiers of the blocks on that way."},
    {"SourceModel_", "Name of the model that has the signal."},
    {"SignalUUID_", "UUID of the signal."},
    {"ObserverType_", "Kind of client."},
    {"ObserverParams_", "Whatever the client keeps for itself."},
    {"UpdateRate_", "How often the client is updated."},
    {"DimensionChannel_", "Which element of a signal of several is observed."},
    {"ObserveImaginaryPart_", "Whether it is the imaginary part of a complex signal."},
    {"BusLeafPath_", "Path of the observed leaf inside a bus."},
    {"SignalInfo", "The signal, looked up at each reading; a 0x0 double when no open model has it."},
};

constexpr Row kModelObservers[] = {
    {"", "A model's signals and clients in one value, as it travels with the model."},
    {"Signals", "The signals, or an empty value."},
    {"Clients", "The clients, or an empty value."},
    {"ModelObservers", "Both parts, each of which may be an empty value, or neither.",
     "[signals: Kestrel.HMI.InstrumentedSignals], [clients: Kestrel.HMI.StreamingClients]",
     "observers: Kestrel.HMI.ModelObservers"},
    {"getSignalsAndClients", "Both parts.", "observers: Kestrel.HMI.ModelObservers", "signals, clients"},
    {"createFromSignalsAndClients", "As the constructor, of both parts.", "signals, clients",
     "observers: Kestrel.HMI.ModelObservers"},
};

constexpr Row kInterfaceMgr[] = {
    {"", "The dashboards' manager, of which there is one."},
    {"InterfaceMgr", "A manager of its own, which nobody asks; \"getInterfaceMgr\" answers the one that counts.", "",
     "manager: Kestrel.HMI.InterfaceMgr"},
    {"getInterfaceMgr", "The one manager.", "", "manager: Kestrel.HMI.InterfaceMgr"},
    {"renameModel", "Tells the dashboards that a model has another name, and gives it to the open one.",
     "manager: Kestrel.HMI.InterfaceMgr, oldName, newName"},
};

constexpr Row kModel[] = {
    {"", "An open model."},
    {"Name", "The model's name when the object was made."},
    {"Model", "The object of the open model of that name; fails when none is open.", "name", "model: Kestrel.Model"},
};

constexpr Row kFunctions[] = {
    {"isequal",
     "Whether all values are equal in size and contents: numbers whatever their class, structs whatever the order of "
     "their fields; NaN equals nothing.",
     "left, right, [more]", "areEqual"},
    {"applyRebindingRules",
     "Binds each signal to its block anew, by identifier or else by path; without \"all\" only forgets handles that "
     "are "
     "stale.",
     "signals: Kestrel.HMI.InstrumentedSignals, all"},
    {"validateAndRemoveUnused", "Removes clients of kinds no longer supported and clients whose signal is gone.",
     "clients: Kestrel.HMI.StreamingClients"},
    {"getAlignedObservers", "The clients as objects in a column, the blocks' paths as they are now.",
     "clients: Kestrel.HMI.StreamingClients", "objects"},
    {"getObservedPorts",
     "The observed ports at or below a full path, for a kind of display, each result a column; an empty text means "
     "all.",
     "model: Kestrel.Model, below, visualType, withHidden, withUnsaved",
     "uuid, blockHandle, port, decimation, maxPoints, isFrameBased, isBufferedOnTarget, name, isHidden, path"},
    {"getPortsWithBadges", "Handles of the blocks with an observed port, a row in ascending order.",
     "model: Kestrel.Model", "blockHandles"},
    {"Kestrel.HMI.kshmi", "Tells the dashboards of an event at a block.", "event, path"},
};

}  // namespace

void noteHostSide() {
    if (orvex::findNote("Kestrel.Model")) return;
    noteAll("Kestrel.HMI.InstrumentedSignals", kInstrumentedSignals);
    noteAll("Kestrel.HMI.StreamingClients", kStreamingClients);
    noteAll("Kestrel.HMI.SignalSpecification", kSignalSpecification);
    noteAll("Kestrel.HMI.SignalClient", kSignalClient);
    noteAll("Kestrel.HMI.ModelObservers", kModelObservers);
    noteAll("Kestrel.HMI.InterfaceMgr", kInterfaceMgr);
    noteAll("Kestrel.Model", kModel);
    for (const Row& row : kFunctions) orvex::note(row.about, {row.sentence, row.inputs, row.outputs});
}

}  // namespace kestrel
