#pragma once

#include <optional>
#include <string>
#include <utility>

#include "workbench/compare/merge.h"
#include "workbench/model_file/model_file.h"

namespace workbench {

/// A model file; nothing for one that is empty, which version control gives where there is none ("/dev/null").
std::optional<ModelFile> readUnlessEmpty(const std::string& path);
/// Two model files. One that is empty is a model without anything, of the other's name.
std::pair<ModelFile, ModelFile> readCompared(const std::string& before, const std::string& after);
/// Merges what these files hold, each of which may be empty. Nothing is written.
MergedModel mergeFiles(const std::string& base, const std::string& ours, const std::string& theirs);

}  // namespace workbench
