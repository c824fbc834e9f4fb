#pragma once

#include <string>
#include <string_view>

#include "memory_host/kestrel/loaded_models.h"
#include "memory_host/kestrel/signal_block.h"

/// Finding blocks of open models by identifiers and paths with the model's name in front.
namespace kestrel {

/// "Model:eid", UTF-8. Nothing when the model is not open or has no such block.
LoadedBlock findByFullEid(std::string_view fullEid);
/// "Model/path". Nothing when the model is not open or has no such block.
LoadedBlock findByFullPath(std::u16string_view fullPath);
/// The name in front of the first '/'; the whole text when there is none.
std::u16string_view modelOfPath(std::u16string_view fullPath);

/// The block that a signal is on, both texts with the model's name in front: found by its identifier wherever it has
/// moved to, by the path where there is no identifier. Nothing when it is gone.
LoadedBlock signalBlock(std::string_view fullEid, std::u16string_view fullPath);
/// The same of a signal object.
LoadedBlock signalBlock(const hvArray* signal);
/// The same as the first; throws the host's exception, naming the model and the identifier or path, when the model is
/// not open or has no such block.
LoadedBlock requireBlock(std::string_view fullEid, std::u16string_view fullPath);

}  // namespace kestrel
