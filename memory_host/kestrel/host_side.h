#pragma once

#include <string>
#include <vector>

#include "host/api.h"

namespace kestrel {

/// Defines what the modelling side offers to scripts and libraries. Calling it again changes nothing. It
/// does not create the namespace "Kestrel": a library that is loaded later finds none and registers its own.
///
/// Classes:
/// - "Kestrel.HMI.SignalSpecification": one signal. Made from nothing or from a 1x1 struct with all persisted
///   fields. "getAlignedBlockPath" answers the block's full path as it is now; it fails, naming the model and
///   the identifier or path, when the model is not open or has no such block.
/// - "Kestrel.HMI.SignalClient": one observer. Made from nothing or from a 1x1 struct with all persisted
///   fields. "SignalInfo" (read-only) is the observed signal's object, a 0x0 double when no open model that
///   the client names has it.
/// - "Kestrel.HMI.ModelObservers": "getSignalsAndClients" (two outputs), and the static
///   "createFromSignalsAndClients".
/// - "Kestrel.HMI.InterfaceMgr": the static "getInterfaceMgr" answers the one manager; "renameModel"
///   (manager, old name, new name) is recorded and renames the open model unless it has the new name.
/// - "Kestrel.Model": the object of an open model, made from its name.
///
/// Functions:
/// - "isequal" (two values or more): equal sizes and contents; numbers and logicals whatever their class,
///   structs whatever the order of their fields, NaN equals nothing, objects by handle or by properties.
/// - "applyRebindingRules" (set, logical): true binds every signal anew, by identifier ("eid"), else by
///   path ("path"), else it is left unresolved; false leaves unresolved those with a stale handle only.
/// - "validateAndRemoveUnused" (clients): removes clients of a deprecated kind and those whose signal is gone.
/// - "getAlignedObservers" (clients): an N x 1 array of the clients' objects, model paths aligned.
/// - "getObservedPorts" (model, full path, display kind, with hidden ones, with unsaved ones): ten N x 1
///   results, namely UUID, block handle, output port, decimation, maximum points, frame based, buffered on
///   the target, signal name, hidden in the viewer, full path; texts in cells, all else doubles. An empty path
///   or kind means all; charts and signals whose block is gone are not listed.
/// - "getPortsWithBadges" (model): handles of the blocks with an observed port, 1 x N, ascending.
/// - "Kestrel.HMI.kshmi" (event, path): recorded.
OX_API void installHostSide();
/// Unloads all models and forgets what was recorded. The definitions stay until `orvex::releaseObjectSystem`; after
/// that, `installHostSide` defines them anew.
OX_API void releaseHostSide() noexcept;

/// What the interface manager was told by "renameModel".
struct ModelRename {
    std::u16string oldName;  ///< as the manager was told
    std::u16string newName;  ///< as the manager was told
};
/// What the dispatcher "Kestrel.HMI.kshmi" was told.
struct HmiEvent {
    std::u16string event;  ///< such as "block_param_change"
    std::u16string path;   ///< full path of the block
};
/// Both: everything since the start or the last `releaseHostSide`, oldest first.
OX_API const std::vector<ModelRename>& recordedRenames() noexcept;
OX_API const std::vector<HmiEvent>& recordedEvents() noexcept;  ///< As above.

}  // namespace kestrel
