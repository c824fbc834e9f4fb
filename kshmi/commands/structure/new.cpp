#include <fmt/format.h>

#include "kshmi/commands/command_options.h"
#include "kshmi/commands/commands.h"
#include "workbench/model_file/model_file.h"
#include "workbench/text/text.h"

namespace kshmi {

namespace {

using namespace workbench;

struct NewArguments {
    std::string file;
    std::string name;
};

int runNew(const NewArguments& arguments, const Output& output) {
    kshmi::enterHost(output.err);
    const ModelFile made = newModelFile(toUtf16(arguments.name));
    if (arguments.file == kStandardStream) {
        sendModel(output, modelText(made));
        return kSuccess;
    }
    writeNewModelFile(arguments.file, contentsOf(made));
    output.out << fmt::format("{}: made the model {}, with no blocks\n", printable(std::string_view(arguments.file)),
                              printable(made.model.name()));
    return kSuccess;
}

}  // namespace

void addNew(CLI::App& app, Run& run) {
    const auto arguments = std::make_shared<NewArguments>();
    CLI::App* const command = addCommand(app, "new", "Make a model file with no blocks; one that is there is kept",
                                         "  kshmi new cruise.json --name cruise\n"
                                         "  kshmi block add cruise.json Sensors/Speed --outputs speed,valid\n"
                                         "  kshmi mark cruise.json Sensors/Speed:speed",
                                         arguments->file);
    command->get_option("MODEL")->description("model file to make; - is the standard output");
    command->add_option("--name", arguments->name, "name of the model, without '/' and ':'")->required();
    runWith(*command, runNew, arguments, run);
}

}  // namespace kshmi
