#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/hv_array.h"
#include "memory_host/kestrel/model.h"
#include "workbench/files/file_version.h"
#include "workbench/files/standard_stream.h"
#include "workbench/model_file/model_extras.h"
#include "workbench/model_file/record_table.h"
#include "workbench/text/error.h"

namespace workbench {

/// A model file's contents. See docs/model-file.md for the format.
struct ModelFile {
    kestrel::Model model;
    /// N x 1 struct arrays with the saved fields, marked as read from a file; absent fields are unset.
    HvArrayPtr signals;
    HvArrayPtr clients;
    std::vector<RecordLines> signalLines;
    std::vector<RecordLines> clientLines;
    ModelExtras extras = {};
    /// Of the file when it was opened.
    std::optional<FileVersion> version = std::nullopt;
};

/// An empty model of that name, with no signals and no clients. Throws `Error` for a name that cannot be.
ModelFile newModelFile(const std::u16string& name);

/// Reads a model file, or standard input. Throws `Error` that names file, line and JSON pointer for whatever is not as
/// the format says: syntax, unknown, missing and duplicate keys, wrong kinds, paths and identifiers that are empty or
/// taken. Whether signals and clients fit the model is not looked at.
ModelFile readModelFile(const std::string& path);
/// The same of a text in memory; `name` stands for the path in messages.
ModelFile readModelText(const std::string& name, const std::string& text);
/// Takes a fault of a block, of a chart's items, or of a value in a record.
using FaultSink = std::function<void(const Error& fault)>;
/// The same, but such faults are handed on and left out of the result: the block, the chart item, the value, which is
/// unset. Whatever else is wrong is thrown.
ModelFile readModelFile(const std::string& path, const FaultSink& faults);
ModelFile readModelText(const std::string& name, const std::string& text, const FaultSink& faults);

/// Takes the next piece of what is written.
using TextSink = std::function<void(std::string_view piece)>;

/// Writes a model in the canonical form: the same contents give the same bytes. The records are struct arrays with
/// the saved fields, null for none. Throws `Error` when a value has no JSON form, and what the sink throws.
void writeModel(const TextSink& sink, const kestrel::Model& model, const hvArray* signals, const hvArray* clients,
                const ModelExtras& extras = {});
/// The same as one text.
std::string modelText(const kestrel::Model& model, const hvArray* signals, const hvArray* clients,
                      const ModelExtras& extras = {});
std::string modelText(const ModelFile& file);

/// A file that was written.
struct WrittenFile {
    FileVersion version;
    std::vector<std::string> warnings;  ///< what else has changed, as `AtomicFile::warnings` says
};

/// The same into the file at `path`, which is replaced as a whole or left as it was: only that version of it with
/// `replaced`. Throws `Error`, also when the file cannot be written.
WrittenFile writeModelFile(const std::string& path, const kestrel::Model& model, const hvArray* signals,
                           const hvArray* clients, const ModelExtras& extras = {},
                           std::optional<FileVersion> replaced = std::nullopt);
WrittenFile writeModelFile(const std::string& path, const ModelFile& file,
                           std::optional<FileVersion> replaced = std::nullopt);
/// The same into a file that is not there yet. Throws `Error` when it is.
WrittenFile writeNewModelFile(const std::string& path, const kestrel::Model& model, const hvArray* signals,
                              const hvArray* clients, const ModelExtras& extras = {});

}  // namespace workbench
