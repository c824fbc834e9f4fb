#include "workbench/compare/compared_file.h"

#include <filesystem>

#include "workbench/compare/twice_added.h"

namespace workbench {

std::optional<ModelFile> readUnlessEmpty(const std::string& path) {
    std::error_code code;
    const bool isEmpty = path == "/dev/null" || (std::filesystem::file_size(path, code) == 0 && !code);
    return isEmpty ? std::nullopt : std::optional(readModelFile(path));
}

std::pair<ModelFile, ModelFile> readCompared(const std::string& before, const std::string& after) {
    std::optional<ModelFile> old = readUnlessEmpty(before);
    std::optional<ModelFile> next = readUnlessEmpty(after);
    if (!old) old = newModelFile(next ? next->model.name() : u"none");
    if (!next) next = newModelFile(old->model.name());
    return {std::move(*old), std::move(*next)};
}

MergedModel mergeFiles(const std::string& base, const std::string& ours, const std::string& theirs) {
    auto [one, other] = readCompared(ours, theirs);
    std::optional<ModelFile> before = readUnlessEmpty(base);
    if (!before) before = newModelFile(one.model.name());
    tellApart(*before, one, other);
    return mergeModels(*before, one, other);
}

}  // namespace workbench
