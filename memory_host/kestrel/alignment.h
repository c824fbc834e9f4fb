#pragma once

#include <string>
#include <string_view>

#include "memory_host/kestrel/loaded_models.h"

/// Finding blocks of open models by identifiers and paths with the model's name in front.
namespace kestrel {

/// "Model:eid", UTF-8. Nothing when the model is not open or has no such block.
LoadedBlock findByFullEid(std::string_view fullEid);
/// "Model/path". Nothing when the model is not open or has no such block.
LoadedBlock findByFullPath(std::u16string_view fullPath);
/// The name in front of the first '/'; the whole text when there is none.
std::u16string_view modelOfPath(std::u16string_view fullPath);

/// The block as it is now: found by its identifier wherever it has moved to, by the path where there is
/// no identifier. Throws the host's exception, naming the model and the identifier or path, when the
/// model is not open or has no such block.
LoadedBlock requireBlock(std::string_view fullEid, std::u16string_view fullPath);

}  // namespace kestrel
