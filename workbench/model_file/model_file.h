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
    RecordLines signalLines;
    RecordLines clientLines;
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

/// Takes a model while its file is being read. It may throw: what comes then is still read, so that a fault of the file
/// itself is told first, and thrown away; nothing more is handed over.
class ModelSink {
public:
    virtual ~ModelSink() = default;
    /// First of all.
    virtual void takeModel(kestrel::Model model) = 0;
    /// All signals in front of the clients, in order, up to `kSlice` at a time, marked as read from a file; one slice
    /// for each kind at least. `lines` has the lines of all records of the kind so far.
    virtual void takeRecords(RecordKind kind, RecordSlice slice, const RecordLines& lines) = 0;
};
/// Reads as `readModelFile` does, with the same errors. What it returns has neither model, signals nor marked names.
/// They are handed over as soon as they are read, where the blocks come before the signals and these before the
/// clients, and all at once at the end where they do not.
struct RestOfModelFile {
    RecordLines signalLines;
    RecordLines clientLines;
    ModelExtras extras;
    std::optional<FileVersion> version;
};
RestOfModelFile readModelFile(const std::string& path, ModelSink& sink);
RestOfModelFile readModelText(const std::string& name, const std::string& text, ModelSink& sink);

/// Takes the next piece of what is written.
using TextSink = std::function<void(std::string_view piece)>;

/// What is written of a model.
struct ModelContents {
    const kestrel::Model& model;
    RecordSource signals;
    RecordSource clients;
    const ModelExtras& extras;  ///< but for the marked names
};
/// Of records that are there, N x 1 struct arrays with the saved fields, null for none. It does not outlive them.
ModelContents contentsOf(const kestrel::Model& model, const hvArray* signals, const hvArray* clients,
                         const ModelExtras& extras);
ModelContents contentsOf(const ModelFile& file);

/// Writes a model in the canonical form: the same contents give the same bytes. Throws `Error` when a value has no JSON
/// form, and what sink and sources throw.
void writeModel(const TextSink& sink, const ModelContents& contents);
/// The same as one text.
std::string modelText(const ModelContents& contents);
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
WrittenFile writeModelFile(const std::string& path, const ModelContents& contents,
                           std::optional<FileVersion> replaced = std::nullopt);
WrittenFile writeModelFile(const std::string& path, const kestrel::Model& model, const hvArray* signals,
                           const hvArray* clients, const ModelExtras& extras = {},
                           std::optional<FileVersion> replaced = std::nullopt);
WrittenFile writeModelFile(const std::string& path, const ModelFile& file,
                           std::optional<FileVersion> replaced = std::nullopt);
/// The same into a file that is not there yet. Throws `Error` when it is.
WrittenFile writeNewModelFile(const std::string& path, const ModelContents& contents);

}  // namespace workbench
