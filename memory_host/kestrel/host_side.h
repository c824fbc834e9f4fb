#pragma once

#include <string>
#include <vector>

#include "host/api.h"

namespace kestrel {

/// Defines the host classes and host functions of the modelling side (package "Kestrel.HMI" and the
/// functions called by plain name). Calling it again changes nothing. It does not create the
/// namespace "Kestrel": a library that is loaded later finds none and registers its own.
OX_API void installHostSide();
/// Unloads all models, forgets what was recorded and drops the interface manager. The definitions
/// stay until `orvex::releaseObjectSystem`; after that, `installHostSide` defines them anew.
OX_API void releaseHostSide() noexcept;

/// What the interface manager was told by "renameModel".
struct ModelRename {
    std::u16string oldName;
    std::u16string newName;
};
/// What the dispatcher "Kestrel.HMI.kshmi" was told.
struct HmiEvent {
    std::u16string event;
    std::u16string path;
};
/// Both: everything since the start or the last `releaseHostSide`, oldest first.
OX_API const std::vector<ModelRename>& recordedRenames() noexcept;
OX_API const std::vector<HmiEvent>& recordedEvents() noexcept;

}  // namespace kestrel
