#include <fmt/format.h>

#include <sstream>

#include "kshmi/print/output.h"
#include "kshmi/print/reports/carry_report.h"
#include "kshmi/print/reports/diff_report.h"
#include "kshmi/print/reports/findings.h"
#include "kshmi/print/reports/import_report.h"
#include "kshmi/print/reports/page_report.h"
#include "kshmi/print/reports/sarif.h"
#include "python/native/define.h"
#include "python/native/open_model.h"
#include "report/page_file.h"
#include "workbench/carry/carry_files.h"
#include "workbench/check/check_file.h"
#include "workbench/check/settling.h"
#include "workbench/compare/compared_file.h"
#include "workbench/compare/diff.h"
#include "workbench/import/import_model.h"
#include "workbench/text/text.h"

namespace ks_hmi_python {

using namespace workbench;

namespace {

using Words = std::vector<std::string>;

void warnOf(const std::string& file, const std::vector<std::string>& warnings) {
    for (const std::string& warning : warnings) warn(fmt::format("{}: {}", file, warning));
}

std::string checkReport(const SettledFile& file, bool isDryRun) {
    kshmi::FindingCounts counts;
    counts.add(file.now);
    std::string text;
    kshmi::appendCheckedFile(text, file.now, file.settled);
    return fmt::format(
        "{{\"kshmi\": 1, \"command\": \"check\", \"files\": [\n  {}\n], "
        "\"errors\": {}, \"warnings\": {}, \"notes\": {}, \"dryRun\": {}}}\n",
        printableJson(text), counts.errors, counts.warnings, counts.notes, isDryRun);
}

std::string check(const std::string& path, const Words& mended, bool isDryRun) {
    const FindingKinds kinds = findingKindsCalled(mended, isMendable, "mend=");
    SettledFile file{{}, checkFile(path), {}};
    if (kinds.any()) file = settleFile(std::move(file.now), Settling::mend, kinds, isDryRun);
    warnOf(path, file.warnings);
    return checkReport(file, isDryRun);
}

std::string sarif(const Words& paths) {
    std::ostringstream out;
    kshmi::SarifLog log(out);
    for (const std::string& path : paths) log.add(checkFile(path));
    log.close();
    return out.str();
}

std::string checkModel(OpenModel& model) {
    return checkReport({{}, checkText(model.session().path(), model.session().text()), {}}, false);
}

std::string prune(const std::string& path, const Words& words, bool isDryRun) {
    const FindingKinds kinds = prunedKinds(words, "kinds=");
    CheckedFile checked = checkFile(path);
    if (!checked.contents) throw errorOf(checked.findings.back());
    const SettledFile file = settleFile(std::move(checked), Settling::prune, kinds, isDryRun);
    warnOf(path, file.warnings);
    std::ostringstream out;
    kshmi::printPruneJson(file, path, isDryRun, out);
    return out.str();
}

std::string diff(const std::string& before, const std::string& after) {
    const auto [old, next] = readCompared(before, after);
    std::ostringstream out;
    kshmi::printDiffJson(diffModels(old, next), {before, after}, old, next, {out, out});
    return out.str();
}

std::string comparable(const std::string& path) { return comparableText(readModelFile(path)); }

std::string merge(const std::string& base, const std::string& ours, const std::string& theirs,
                  const std::string& output, bool isDryRun) {
    const MergedModel merged = mergeFiles(base, ours, theirs);
    if (!isDryRun) warnOf(output, writeModelFile(output, merged.file).warnings);
    std::ostringstream out;
    kshmi::printMergeJson(merged, output, isDryRun, {out, out});
    return out.str();
}

CarryOptions optionsOf(const std::string& match, bool acceptsGuesses) {
    CarryOptions options;
    options.acceptsGuesses = acceptsGuesses;
    if (match == "id")
        options.by = MatchBy::identifier;
    else if (match == "path")
        options.by = MatchBy::path;
    else if (!match.empty())
        throw Error(inQuotes(match) + ": match= takes \"id\" or \"path\"");
    return options;
}

std::string carry(const std::string& before, const std::string& after, const std::string& output,
                  const std::string& map, const std::string& proposal, const std::string& match, bool acceptsGuesses,
                  bool isDryRun) {
    const CarryFiles files{before, after, output, map, proposal};
    const CarriedFiles done = carryFiles(files, optionsOf(match, acceptsGuesses));
    const CarryReport& report = done.carried.report;
    saveWithProposal(files, report, [&] {
        if (!isDryRun)
            warnOf(files.target(), writeModelFile(files.target(), done.carried.file, done.replaced).warnings);
    });
    std::ostringstream out;
    kshmi::printCarryJson(report, {files.before, files.after, files.target(), done.oldModel, done.newModel, isDryRun},
                          {out, out});
    return out.str();
}

std::string writeReport(const std::string& path, const std::string& output, const std::string& run,
                        std::optional<int> number) {
    report::PageSource source(path);
    if (!run.empty()) source.addRun(run, number);
    const report::WrittenPage page = report::writePageFile(output, source.contents(kshmi::remedyOnPage));
    warnOf(output, page.warnings);
    std::ostringstream out;
    kshmi::printPageJson(source.session(), source.checked(), source.run(), output, page.bytes, out);
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
                                  std::optional<bool> locals, const std::string& previous, bool isUpdate) {
    const std::optional<ModelFile> before = versionBefore(path, previous, isUpdate);
    ImportOptions options;
    options.name = name.empty() && isUpdate ? toUtf8(before->model.name()) : name;
    options.locals = locals;
    options.previous = before ? &*before : nullptr;
    ImportedModel imported = importFile(source, path, options);
    warnOf(imported);
    std::ostringstream report;
    kshmi::printImportJson(imported, path, report);
    ModelFile file = modelFileOf(std::move(imported));
    if (isUpdate) file.version = before->version;
    auto model = makeHeld<OpenModel>(path, std::move(file));
    model->importReport = report.str();
    return model;
}

}  // namespace

void bindFiles(py::module_& module) {
    define(module, "check", check);
    define(module, "checkModel", checkModel);
    define(module, "sarif", sarif);
    define(module, "prune", prune);
    define(module, "diff", diff);
    define(module, "comparable", comparable);
    define(module, "merge", merge);
    define(module, "importModel", import);
    define(module, "report", writeReport);
    define(module, "carry", carry);
}

}  // namespace ks_hmi_python
