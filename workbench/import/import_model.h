#pragma once

#include <functional>
#include <optional>
#include <string>

#include "workbench/import/foreign_file.h"
#include "workbench/import/import_notes.h"
#include "workbench/model_file/model_file.h"

namespace workbench {

struct ImportOptions {
    /// The model's name; empty: what the file calls it, else the file's own name.
    std::string name = {};
    /// Whether local variables become ports; nothing: as it was in `previous`, else not.
    std::optional<bool> locals = std::nullopt;
    /// An earlier version of the model, imported or not: its blocks keep their element identifiers. Not owned.
    const ModelFile* previous = nullptr;
    ArchiveLimits limits = {};
    /// Told what comes next: "reading", "taking apart", "building". May be empty.
    std::function<void(const char*)> progress = {};
};

/// A foreign model as a model file can hold it, without signals and clients. The origin has neither file nor hash yet.
struct ImportedModel {
    kestrel::Model model;
    Origin origin;
    ImportNotes warnings;
    ImportNotes dropped;
    std::string document;  ///< what was read, for messages: "engine.fmu/modelDescription.xml"
    std::size_t portCount = 0;
    std::size_t keptCount = 0;  ///< blocks that `previous` has under the same identifier
    std::size_t goneCount = 0;  ///< blocks that `previous` has and this model has not
};

/// The version that the import to `target` comes after: the model file there when it is to be updated, else the file
/// that is named; nothing without either. Throws `Error` when there is a file that is not to be updated, and when one
/// to be updated has marks or clients: they are not put on other blocks unseen.
std::optional<ModelFile> versionBefore(const std::string& target, const std::string& previous, bool isUpdate);

/// The same as a model file with nothing marked.
ModelFile modelFileOf(ImportedModel imported);

/// Pure: the same document and options give the same model. Throws `Error`.
ImportedModel importDocument(ForeignDocument document, const ImportOptions& options);

/// The same of a file, with the origin complete: its hash, and where it lies as seen from the folder of the model file
/// at `target`.
ImportedModel importFile(const std::string& path, const std::string& target, const ImportOptions& options);

}  // namespace workbench
