#pragma once

#include <gtest/gtest.h>
#include <zip.h>

#include <string>
#include <utility>
#include <vector>

#include "workbench/import/import_model.h"
#include "workbench/text/error.h"
#include "workbench/text/text.h"

namespace workbench::testing {

inline ImportedModel imported(std::string xml, const ImportOptions& options = {}) {
    return importDocument({false, "some.xml", std::move(xml)}, options);
}

/// "path: port, port" for each block, with lines between.
inline std::string blocksOf(const kestrel::Model& model) {
    std::string text;
    for (const kestrel::Block& block : model.blocks()) {
        text += toUtf8(block.path);
        for (std::size_t i = 0; i < block.outputs.size(); ++i)
            text += (i == 0 ? ": " : ", ") + toUtf8(block.outputs[i]);
        text += '\n';
    }
    return text;
}
inline std::string blocksOf(const ImportedModel& model) { return blocksOf(model.model); }

/// "LINE text: name, name" for each note; no line where it has none.
inline std::string textOf(const ImportNotes& notes) {
    std::string text;
    for (const ImportNote& note : notes.all()) {
        text += (note.line > 0 ? std::to_string(note.line) + " " : "") + note.text;
        for (std::size_t i = 0; i < note.names.size(); ++i) text += (i == 0 ? ": " : ", ") + note.names[i];
        text += '\n';
    }
    return text;
}

/// What a refusal says.
template <class Work>
std::string refusalOf(Work work) {
    try {
        work();
    } catch (const Error& error) {
        return error.what();
    }
    return "nothing was refused";
}
inline std::string refusalOfXml(std::string xml) {
    return refusalOf([&] { imported(std::move(xml)); });
}

inline std::string fmi2(const std::string& variables, const std::string& head = R"(modelName="Engine")") {
    return "<fmiModelDescription fmiVersion=\"2.0\" guid=\"g\" " + head + ">\n<ModelVariables>\n" + variables +
           "</ModelVariables></fmiModelDescription>";
}
/// Outputs, each on a line of its own, from the third on.
inline std::string outputs(const std::vector<std::string>& names) {
    std::string variables;
    for (const std::string& name : names)
        variables += "<ScalarVariable name=\"" + name +
                     "\" valueReference=\"7\" causality=\"output\"><Real/></ScalarVariable>\n";
    return fmi2(variables);
}

struct Packed {
    std::string name;
    std::string bytes;
    bool isLink = false;
};

/// A zip archive's bytes.
inline std::string zipOf(const std::vector<Packed>& entries) {
    zip_error_t error;
    zip_source_t* const target = ::zip_source_buffer_create(nullptr, 0, 0, &error);
    ::zip_source_keep(target);
    zip_t* const archive = ::zip_open_from_source(target, ZIP_TRUNCATE, &error);
    for (const Packed& entry : entries) {
        zip_source_t* const source = ::zip_source_buffer(archive, entry.bytes.data(), entry.bytes.size(), 0);
        const auto index = ::zip_file_add(archive, entry.name.c_str(), source, ZIP_FL_ENC_UTF_8);
        const zip_uint32_t mode = entry.isLink ? 0120777U : 0100644U;
        ::zip_file_set_external_attributes(archive, static_cast<zip_uint64_t>(index), 0, ZIP_OPSYS_UNIX, mode << 16U);
    }
    ::zip_close(archive);
    ::zip_source_open(target);
    std::string bytes(1 << 20, '\0');
    bytes.resize(static_cast<std::size_t>(::zip_source_read(target, bytes.data(), bytes.size())));
    ::zip_source_close(target);
    ::zip_source_free(target);
    return bytes;
}

}  // namespace workbench::testing
