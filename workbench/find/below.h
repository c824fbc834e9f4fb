#pragma once

#include <string>
#include <string_view>

#include "memory_host/kestrel/model.h"

namespace workbench {

/// The path, without the model, at and below which the text asks for blocks; empty for the whole model, which its name
/// and an empty text mean. Throws `Error` when the model has no block there, and for a text that can be read in two
/// ways.
std::u16string resolveBelow(const kestrel::Model& model, std::string_view text);

}  // namespace workbench
