#include <pybind11/stl.h>

#include <fmt/format.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

#include "kshmi/print/carry_report.h"
#include "kshmi/print/diff_report.h"
#include "kshmi/print/findings.h"
#include "kshmi/print/output.h"
#include "python/native/open_model.h"
#include "workbench/check/check_file.h"
#include "workbench/check/settling.h"
#include "workbench/compare/carry.h"
#include "workbench/compare/diff.h"
#include "workbench/files/atomic_file.h"
#include "workbench/import/import_model.h"
#include "workbench/json/json_object.h"
#include "workbench/text/text.h"

namespace ks_hmi_python {

using namespace workbench;

namespace {

using Words = std::vector<std::string>;

void warnOf(const std::string& file, const std::vector<std::string>& warnings) {
    for (const std::string& warning : warnings) warn(fmt::format("{}: {}", file, warning));
}

FindingKinds kindsOf(const Words& words) {
    FindingKinds kinds;
    for (const std::string& word : words) {
        const std::optional<FindingKind> kind = findingKindOf(word);
        if (word != "all" && !(kind && isMendable(*kind))) {
            Words mendable{"all"};
            for (std::size_t i = 0; i < kFindingKinds; ++i)
                if (isMendable(static_cast<FindingKind>(i))) mendable.emplace_back(textOf(static_cast<FindingKind>(i)));
            throw Error(inQuotes(word) + " is nothing that can be mended; there are: " + listed(mendable));
        }
        for (std::size_t i = 0; i < kFindingKinds; ++i)
            if (const auto one = static_cast<FindingKind>(i); isMendable(one) && (word == "all" || one == *kind))
                kinds.set(i);
    }
    return kinds;
}

std::string check(const std::string& path, const Words& mended, bool isDryRun) {
    const FindingKinds kinds = kindsOf(mended);
    SettledFile file{{}, checkFile(path), {}};
    if (kinds.any()) file = settleFile(std::move(file.now), Settling::mend, kinds, isDryRun);
    warnOf(path, file.warnings);
    kshmi::FindingCounts counts;
    counts.add(file.now);
    std::string out;
    JsonObject object(out);
    object.number("kshmi", 1).text("command", std::string_view("check")).name("files");
    out += '[';
    kshmi::appendCheckedFile(out, file.now, file.settled);
    out += ']';
    object.number("errors", counts.errors).number("warnings", counts.warnings).number("notes", counts.notes);
    object.truth("dryRun", isDryRun).close();
    return out;
}

std::string diff(const std::string& before, const std::string& after) {
    const ModelFile old = readModelFile(before);
    const ModelFile next = readModelFile(after);
    std::ostringstream out;
    kshmi::printDiffJson(diffModels(old, next), {before, after}, old, next, {out, out});
    return out.str();
}

struct CarryArguments {
    std::string before, after, output, map, proposal, match;
    bool acceptsGuesses = false, isDryRun = false;
};

bool isForeign(const std::string& path) {
    const std::string ending = std::filesystem::path(path).extension().string();
    return ending == ".ssd" || ending == ".ssp" || ending == ".xml" || ending == ".fmu";
}

ModelFile modelFileOf(ImportedModel imported) {
    ModelFile file = newModelFile(imported.model.name());
    file.model = std::move(imported.model);
    file.extras.origin = std::move(imported.origin);
    return file;
}

ModelFile nextVersion(const CarryArguments& arguments, const ModelFile& old) {
    if (!isForeign(arguments.after)) return readModelFile(arguments.after);
    if (arguments.output.empty()) throw Error("output= is missing; an import needs a model file to go to");
    ImportOptions options;
    options.previous = &old;
    return modelFileOf(importFile(arguments.after, arguments.output, options));
}

CarryMap readMap(const std::string& path, const ModelFile& old, const kestrel::Model& next) {
    if (path.empty()) return {};
    std::ifstream file(path, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    if (!file) throw Error({path}, "cannot be read; check the name and the permissions", ErrorCode::file);
    return {path, text, old, next};
}

CarryOptions optionsOf(const CarryArguments& arguments) {
    CarryOptions options;
    options.acceptsGuesses = arguments.acceptsGuesses;
    if (arguments.match == "id")
        options.by = MatchBy::identifier;
    else if (arguments.match == "path")
        options.by = MatchBy::path;
    else if (!arguments.match.empty())
        throw Error(inQuotes(arguments.match) + ": match= takes \"id\" or \"path\"");
    return options;
}

// First what can fail without having changed anything.
void saveCarried(const CarryArguments& arguments, const CarriedModel& carried, const std::string& target) {
    std::optional<AtomicFile> proposal;
    if (!arguments.proposal.empty()) {
        proposal.emplace(AtomicFile::kNew, arguments.proposal);
        proposal->write(proposedMap(carried.report));
    }
    const bool isInPlace = target == arguments.after;
    if (!arguments.isDryRun)
        warnOf(target, writeModelFile(target, carried.file, isInPlace ? carried.file.version : std::nullopt).warnings);
    if (proposal) proposal->commit();
}

std::string carry(const CarryArguments& arguments) {
    const CarryOptions options = optionsOf(arguments);
    const ModelFile old = readModelFile(arguments.before);
    ModelFile next = nextVersion(arguments, old);
    const CarryMap map = readMap(arguments.map, old, next.model);
    const std::string target = arguments.output.empty() ? arguments.after : arguments.output;
    const std::u16string newName = next.model.name();
    const CarriedModel carried = carryMarks(old, std::move(next), options, map);
    saveCarried(arguments, carried, target);
    std::ostringstream out;
    kshmi::printCarryJson(carried.report,
                          {arguments.before, arguments.after, target, old.model.name(), newName, arguments.isDryRun},
                          {out, out});
    return out.str();
}

void warnOf(const ImportedModel& imported) {
    for (const ImportNote& note : imported.warnings.all()) {
        const std::string names = note.names.empty() ? "" : ": " + listed(note.names, 3, [](const auto& name) {
                                                                return printable(std::string_view(name));
                                                            });
        warn(atPlace({imported.document, note.line}, note.text) + names);
    }
}

std::shared_ptr<OpenModel> import(const std::string& source, const std::string& path, const std::string& name,
                                  std::optional<bool> locals, const std::string& previous) {
    if (std::filesystem::exists(std::filesystem::symlink_status(path)))
        throw Error({path}, "exists already; give another name", ErrorCode::file);
    std::optional<ModelFile> before;
    if (!previous.empty()) before = readModelFile(previous);
    ImportOptions options;
    options.name = name;
    options.locals = locals;
    options.previous = before ? &*before : nullptr;
    ImportedModel imported = importFile(source, path, options);
    warnOf(imported);
    return makeHeld<OpenModel>(path, modelFileOf(std::move(imported)));
}

}  // namespace

void bindFiles(py::module_& module) {
    module.def("check", [](const std::string& path, const Words& mended, bool dryRun) {
        return inHost([&] { return check(path, mended, dryRun); });
    });
    module.def("diff", [](const std::string& before, const std::string& after) {
        return inHost([&] { return diff(before, after); });
    });
    module.def("carry", [](const std::string& before, const std::string& after, const std::string& output,
                           const std::string& map, const std::string& proposal, const std::string& match, bool accept,
                           bool dryRun) {
        return inHost([&] { return carry({before, after, output, map, proposal, match, accept, dryRun}); });
    });
    module.def("importModel", [](const std::string& source, const std::string& path, const std::string& name,
                                 std::optional<bool> locals, const std::string& previous) {
        return inHost([&] { return import(source, path, name, locals, previous); });
    });
}

}  // namespace ks_hmi_python
