#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/hv_array.h"
#include "memory_host/kestrel/loaded_models.h"
#include "memory_host/orvex/objects/objects.h"

/// Finding the signal that an observer watches, through the signal sets of the open models.
namespace kestrel {

/// Full name of the host class of one observer.
inline constexpr const char* kSignalClientClass = "Kestrel.HMI.SignalClient";

/// The models in which a client's signal is looked for, each once: the source model, then the models in
/// front of the elements of its model path.
std::vector<std::u16string> modelsOfClient(const hos::COSObject& client);

/// The signal set of the open model of that name: a value of its own, as a script that is called with it may unload the
/// model. Null while no such model is open and while it has no set.
HvArrayPtr signalsOf(std::u16string_view modelName);
/// UUIDs of the signals in the set's order; empty for null.
std::vector<std::u16string> signalUuids(const hvArray* signals);

/// The object of the signal with that UUID in the first of the models that has it; null when none does.
HvArrayPtr findSignal(const std::vector<std::u16string>& modelNames, const std::u16string& uuid);

}  // namespace kestrel
