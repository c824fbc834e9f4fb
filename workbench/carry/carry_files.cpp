#include "workbench/carry/carry_files.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string_view>
#include <utility>

#include "workbench/files/atomic_file.h"
#include "workbench/files/same_file.h"
#include "workbench/import/import_model.h"
#include "workbench/text/error.h"

namespace workbench {

namespace {

bool isForeign(const std::string& path) {
    const std::string ending = std::filesystem::path(path).extension().string();
    constexpr std::array<std::string_view, 4> kEndings{".ssd", ".ssp", ".xml", ".fmu"};
    return std::ranges::find(kEndings, ending) != kEndings.end();
}

ModelFile nextVersion(const CarryFiles& files, const ModelFile& old) {
    if (!isForeign(files.after)) return readModelFile(files.after);
    if (files.output.empty())
        throw Error({files.after}, "the output is missing; an import needs a model file to go to", ErrorCode::request);
    ImportOptions options;
    options.previous = &old;
    return modelFileOf(importFile(files.after, files.output, options));
}

CarryMap readMap(const std::string& path, const ModelFile& old, const kestrel::Model& next) {
    if (path.empty()) return {};
    std::ifstream file(path, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    if (!file) throw Error({path}, "cannot be read; check the name and the permissions", ErrorCode::file);
    return {path, text, old, next};
}

CarriedModel carryTo(const std::string& file, const ModelFile& old, ModelFile next, const CarryOptions& options,
                     const CarryMap& map) {
    try {
        return carryMarks(old, std::move(next), options, map);
    } catch (const Error& error) {
        throw error.at({file});
    }
}

}  // namespace

CarriedFiles carryFiles(const CarryFiles& files, const CarryOptions& options) {
    if (isSameFile(files.target(), files.before))
        throw Error({files.target()}, "has the marks that are carried, and stays as it is; give another file with -o",
                    ErrorCode::request);
    const ModelFile old = readModelFile(files.before);
    ModelFile next = nextVersion(files, old);
    const CarryMap map = readMap(files.map, old, next.model);
    std::u16string newName = next.model.name();
    CarriedModel carried = carryTo(files.after, old, std::move(next), options, map);
    const auto replaced = files.target() == files.after ? carried.file.version : std::nullopt;
    return {old.model.name(), std::move(newName), std::move(carried), replaced};
}

void saveWithProposal(const CarryFiles& files, const CarryReport& report, const std::function<void()>& save) {
    std::optional<AtomicFile> proposal;
    if (!files.proposal.empty()) {
        proposal.emplace(AtomicFile::kNew, files.proposal);
        proposal->write(proposedMap(report));
    }
    save();
    if (proposal) proposal->commit();
}

}  // namespace workbench
