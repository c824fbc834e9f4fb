#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/hv_array.h"
#include "memory_host/kestrel/model.h"
#include "workbench/files/file_version.h"
#include "workbench/model_file/origin.h"
#include "workbench/model_file/record_table.h"

namespace workbench {

/// A model file's contents. See docs/model-file.md for the format.
struct ModelFile {
    kestrel::Model model;
    /// N x 1 struct arrays with the saved fields, marked as read from a file; absent fields are unset.
    HvArrayPtr signals;
    HvArrayPtr clients;
    std::vector<RecordLines> signalLines;
    std::vector<RecordLines> clientLines;
    /// Nothing for a model that was not imported.
    std::optional<Origin> origin = std::nullopt;
    /// Of the file when it was opened.
    std::optional<FileVersion> version = std::nullopt;
};

/// Reads a model file. Throws `Error` that names file, line and JSON pointer for whatever is not as the
/// format says: syntax, unknown, missing and duplicate keys, wrong kinds, paths and identifiers that are
/// empty or taken. Whether signals and clients fit the model is not looked at.
ModelFile readModelFile(const std::string& path);

/// Writes a model in the canonical form: the same contents give the same bytes. Replaces the file at
/// `path` as a whole or leaves it as it was. The records are struct arrays with the saved
/// fields; null for none. With `replaced` only that version of the file is replaced. Returns the new version. Throws
/// `Error` when the file cannot be written or a value has no JSON form.
FileVersion writeModelFile(const std::string& path, const kestrel::Model& model, const hvArray* signals,
                           const hvArray* clients, const std::optional<Origin>& origin,
                           std::optional<FileVersion> replaced = std::nullopt);

}  // namespace workbench
