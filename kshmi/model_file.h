#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "host/hv_array.h"
#include "memory_host/kestrel/model.h"

namespace kshmi {

/// A model file's contents. See docs/model-file.md for the format.
struct ModelFile {
    static constexpr std::size_t kSignalFields = 16;

    /// Where a signal stands in the file: 1-based lines, 0 for a field that is not there.
    struct SignalLines {
        std::size_t start = 0;
        std::array<std::size_t, kSignalFields> fields{};
    };

    kestrel::Model model;
    /// N x 1 struct array with the persisted fields, marked as read from a file; absent fields are unset.
    HvArrayPtr signals;
    std::vector<SignalLines> signalLines;
    /// One 1x1 struct per client, kept as it is.
    std::vector<HvArrayPtr> clients;
};

/// Reads a model file. Throws `Error` that names file, line and JSON pointer for whatever is not as the
/// format says: syntax, unknown, missing and duplicate keys, wrong kinds, paths and identifiers that are
/// empty or taken. Whether signals fit the model is not looked at.
ModelFile readModelFile(const std::string& path);

/// The file's place for field `field` (a persisted field's name; empty: the signal itself) of signal `position`
/// (0-based), followed by the text.
std::string atSignal(const std::string& path, const std::vector<ModelFile::SignalLines>& lines, std::size_t position,
                     const std::string& field, const std::string& text);

/// Position of a persisted field's name, `ModelFile::kSignalFields` when it is none.
std::size_t signalFieldNumber(std::string_view name) noexcept;

/// Writes a model in the canonical form: the same contents give the same bytes. Replaces the file at
/// `path` as a whole or leaves it as it was. `signals` is a struct array with the persisted fields.
/// Throws `Error` when the file cannot be written or a value has no JSON form.
void writeModelFile(const std::string& path, const kestrel::Model& model, const hvArray* signals,
                    const std::vector<HvArrayPtr>& clients);

}  // namespace kshmi
