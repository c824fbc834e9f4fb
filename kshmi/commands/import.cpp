#include <fmt/format.h>

#include <utility>

#include "kshmi/commands/command_options.h"
#include "kshmi/commands/commands.h"
#include "kshmi/print/reports/import_report.h"
#include "workbench/import/import_model.h"
#include "workbench/text/error.h"
#include "workbench/text/text.h"

namespace kshmi {

namespace {

using namespace workbench;

constexpr std::size_t kMostNames = 3;

struct ImportArguments {
    std::string source;
    std::string target;
    std::string previous;
    std::string name;
    bool isUpdate = false;
    bool takesLocals = false;
    bool leavesLocals = false;
    bool isJson = false;
    bool isQuiet = false;
};

// The first names of a note; empty when none has one.
std::string someNames(const std::vector<std::string>& names) {
    std::vector<std::string> shown;
    for (const std::string& name : names)
        if (!name.empty() && shown.size() < kMostNames) shown.push_back(printable(std::string_view(name)));
    return shown.empty() ? "" : listed(shown, names.size() - shown.size());
}

std::string withNames(const std::string& text, const ImportNote& note) {
    const std::string names = someNames(note.names);
    return names.empty() ? text : fmt::format("{}: {}", text, names);
}

void warn(const ImportedModel& model, const Output& output) {
    for (const ImportNote& note : model.warnings.all())
        output.err << "kshmi: warning: "
                   << withNames(atPlace({printable(std::string_view(model.document)), note.line}, note.text), note)
                   << '\n';
}

void tell(const ImportedModel& model, const ImportArguments& arguments, bool hasPrevious, const Output& output) {
    const std::size_t blocks = model.model.blocks().size();
    output.out << fmt::format("{}: {} {}, model {}\n", printable(std::string_view(arguments.source)), model.origin.kind,
                              printable(std::string_view(model.origin.version)), inQuotes(model.model.name()));
    if (!model.dropped.empty()) output.out << "not taken over:\n";
    for (const ImportNote& note : model.dropped.all())
        output.out << withNames(fmt::format("  {} ({})", note.text, note.names.size()), note) << '\n';
    if (hasPrevious)
        output.out << fmt::format("{} the identifier, {} new, {} gone\n",
                                  counted(model.keptCount, "block") + (model.keptCount == 1 ? " keeps" : " keep"),
                                  blocks - model.keptCount, model.goneCount);
    output.out << fmt::format("{}: saved with {} and {}\n",
                              printable(std::string_view(calledWhenSaved(arguments.target))), counted(blocks, "block"),
                              counted(model.portCount, "port"));
}

ImportOptions optionsOf(const ImportArguments& arguments, const ModelFile* previous, const Output& output) {
    ImportOptions options;
    options.name = arguments.name.empty() && arguments.isUpdate ? toUtf8(previous->model.name()) : arguments.name;
    if (arguments.takesLocals || arguments.leavesLocals) options.locals = arguments.takesLocals;
    options.previous = previous;
    options.progress = [&output](const char* stage) { tellProgress(output, stage); };
    return options;
}

int runImport(const ImportArguments& arguments, const Output& output) {
    const std::optional<ModelFile> previous = versionBefore(arguments.target, arguments.previous, arguments.isUpdate);
    const ModelFile* const before = previous ? &*previous : nullptr;
    const ImportOptions options = optionsOf(arguments, before, output);
    ImportedModel model = importFile(arguments.source, arguments.target, options);
    if (options.progress) options.progress("saving");
    ModelFile file = newModelFile(model.model.name());
    std::swap(file.model, model.model);
    file.extras.origin = model.origin;
    const Output beside =
        saveModel(arguments.target, file, output, arguments.isUpdate ? before->version : std::nullopt);
    std::swap(file.model, model.model);
    warn(model, output);
    if (arguments.isJson)
        printImportJson(model, arguments.target, beside.out);
    else if (!arguments.isQuiet)
        tell(model, arguments, before != nullptr, beside);
    return kSuccess;
}

}  // namespace

void addImport(CLI::App& app, Run& run) {
    const auto arguments = std::make_shared<ImportArguments>();
    CLI::App* const command = app.add_subcommand("import", "Make a model file of a system structure or a unit");
    command->footer(
        "Examples:\n"
        "  kshmi import car.ssp -o car.json\n"
        "  kshmi import engine.fmu -o engine.json --locals\n"
        "  kshmi import engine_v2.fmu -o engine_v2.json --previous engine.json");
    command
        ->add_option("FILE", arguments->source,
                     "an .ssd or .ssp (System Structure and Parameterization 1.0, 2.0), modelDescription.xml or .fmu "
                     "(FMI 1.0, 2.0, 3.0)")
        ->required();
    command->add_option("-o,--output", arguments->target, "model file to write; - is the standard output")
        ->type_name("FILE")
        ->required();
    CLI::Option* const locals =
        command->add_flag("--locals", arguments->takesLocals, "take local variables as well as outputs");
    command->add_flag("--no-locals", arguments->leavesLocals, "outputs only, even if the version before has locals")
        ->excludes(locals);
    command->add_option("--name", arguments->name, "the model's name; what the file calls it if left out");
    CLI::Option* const previous =
        command
            ->add_option("--previous", arguments->previous,
                         "model file of an earlier version: its blocks keep their identifiers")
            ->type_name("FILE");
    command
        ->add_flag("--update", arguments->isUpdate,
                   "the output is that earlier version, and is replaced; it must have no signals and clients")
        ->excludes(previous);
    command->add_flag("--json", arguments->isJson, "print JSON");
    command->add_flag("-q,--quiet", arguments->isQuiet, "print warnings only");
    runWith(*command, runImport, arguments, run);
}

}  // namespace kshmi
