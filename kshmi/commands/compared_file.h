#pragma once

#include <optional>
#include <string>
#include <utility>

#include "workbench/model_file/model_file.h"

namespace kshmi {

/// A model file; nothing for one that is empty, which version control gives where there is none ("/dev/null").
std::optional<workbench::ModelFile> readUnlessEmpty(const std::string& path);
/// Two model files. One that is empty is a model without anything, of the other's name.
std::pair<workbench::ModelFile, workbench::ModelFile> readCompared(const std::string& before, const std::string& after);

}  // namespace kshmi
