#include "workbench/import/import_model.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <utility>

#include "workbench/import/block_identity.h"
#include "workbench/import/fmi_structure.h"
#include "workbench/import/import_error.h"
#include "workbench/import/ssd_structure.h"
#include "workbench/import/xml_file.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

namespace fs = std::filesystem;

// Reads the structure and tells the kind.
ForeignKind readStructure(ForeignDocument document, bool locals, Structure& structure) {
    const XmlFile file(document.name, std::move(document.bytes), structure.warnings);
    const std::string_view root = localName(file.root().name());
    if (root == "SystemStructureDescription") {
        readSsdStructure(file, locals, structure);
        return document.isPacked ? ForeignKind::ssp : ForeignKind::ssd;
    }
    if (root != "fmiModelDescription")
        file.fail(file.root(), "is not a model that can be imported: its outermost element is " + inQuotes(root),
                  "import a SystemStructureDescription or an fmiModelDescription");
    readFmiStructure(file, locals, structure);
    return document.isPacked ? ForeignKind::fmu : ForeignKind::fmi;
}

// The stem of what holds the document: "engine" of "units/engine.fmu/modelDescription.xml".
std::string stemOf(const ForeignDocument& document) {
    const fs::path path(document.name);
    return (document.isPacked ? path.parent_path() : path).stem().string();
}

// A model's name has neither '/' nor ':'.
std::string asModelName(std::string name, ImportNotes& warnings) {
    const std::string given = name;
    for (const char separator : {'/', ':'}) std::replace(name.begin(), name.end(), separator, '_');
    if (name != given) warnings.add("a model's name cannot contain '/' or ':'; written as '_'", given);
    return name;
}

kestrel::Model buildModel(std::string name, const std::string& document, std::vector<kestrel::Block> blocks) {
    try {
        kestrel::Model model(toUtf16(name));
        for (kestrel::Block& block : blocks) model.add(std::move(block));
        return model;
    } catch (const kestrel::ModelError& error) {
        std::string what = error.what();
        if (what.ends_with('.')) what.pop_back();
        failImport({document}, what, "give the model another name");
    }
}

std::size_t portCountOf(const std::vector<kestrel::Block>& blocks) {
    std::size_t count = 0;
    for (const kestrel::Block& block : blocks) count += block.outputs.size();
    return count;
}

// Who does not know of local variables is surprised.
void noteNoOutputs(Structure& structure) {
    std::string text = "has no outputs, so there is nothing to mark";
    for (const ImportNote& note : structure.dropped.all())
        if (note.text.starts_with("local "))
            text = fmt::format("has no outputs; it can be imported with its {} {} as ports", note.names.size(),
                               note.names.size() == 1 ? note.text.substr(0, note.text.size() - 1) : note.text);
    structure.warnings.add(text, "");
}

}  // namespace

std::optional<ModelFile> versionBefore(const std::string& target, const std::string& previous, bool isUpdate) {
    if (!isUpdate && std::filesystem::exists(std::filesystem::symlink_status(target)))
        throw Error({target}, "exists already; give another name", ErrorCode::file, Remedy::updateFile);
    if (!isUpdate && previous.empty()) return std::nullopt;
    ModelFile file = readModelFile(isUpdate ? target : previous);
    const std::size_t signals = hvGetNumberOfElements(file.signals.get()) + file.extras.parked.size();
    const std::size_t clients = hvGetNumberOfElements(file.clients.get());
    if (isUpdate && signals + clients > 0)
        throw Error({target},
                    fmt::format("holds {} and {}, which could end up on other ports", counted(signals, "signal"),
                                counted(clients, "client")),
                    ErrorCode::request, Remedy::carryMarks);
    return file;
}

ModelFile modelFileOf(ImportedModel imported) {
    ModelFile file = newModelFile(imported.model.name());
    file.model = std::move(imported.model);
    file.extras.origin = std::move(imported.origin);
    return file;
}

ImportedModel importDocument(ForeignDocument document, const ImportOptions& options) {
    const ModelFile* const previous = options.previous;
    const Origin* const before = previous && previous->extras.origin ? &*previous->extras.origin : nullptr;
    const bool locals = options.locals.value_or(before && before->locals);
    const auto begin = [&](const char* stage) {
        if (options.progress) options.progress(stage);
    };
    begin("taking apart");
    const std::string shown = document.name;
    std::string name = stemOf(document);
    Structure structure;
    Origin origin;
    origin.kind = nameOf(readStructure(std::move(document), locals, structure));
    origin.version = structure.version;
    origin.locals = locals;
    begin("building");
    origin.gone =
        assignIdentifiers(structure.blocks, {previous ? &previous->model : nullptr, before ? &before->gone : nullptr});
    if (!structure.name.empty()) name = asModelName(structure.name, structure.warnings);
    if (!options.name.empty()) name = options.name;
    const std::size_t ports = portCountOf(structure.blocks);
    if (ports == 0) noteNoOutputs(structure);
    ImportedModel result{buildModel(std::move(name), shown, std::move(structure.blocks)),
                         std::move(origin),
                         std::move(structure.warnings),
                         std::move(structure.dropped),
                         shown,
                         ports};
    if (!previous) return result;
    for (const kestrel::Block& block : previous->model.blocks())
        ++(result.model.findByEid(block.eid) ? result.keptCount : result.goneCount);
    return result;
}

ImportedModel importFile(const std::string& path, const std::string& target, const ImportOptions& options) {
    if (options.progress) options.progress("reading");
    ImportedModel result = importDocument(readForeignFile(path, options.limits), options);
    const fs::path folder = fs::weakly_canonical(fs::absolute(target)).parent_path();
    const fs::path file = fs::weakly_canonical(fs::absolute(path));
    const fs::path relative = file.lexically_relative(folder);
    result.origin.file = (relative.empty() ? file : relative).generic_string();
    result.origin.hash = hashOfFile(path);
    return result;
}

}  // namespace workbench
