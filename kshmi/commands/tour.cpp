#include "kshmi/tour/tour.h"

#include "kshmi/commands/command_options.h"
#include "kshmi/commands/commands.h"

namespace kshmi {

namespace {

struct TourArguments {
    std::string original;
};

// Works on a copy of the file.
int runTour(const TourArguments& arguments, const Output& output) {
    Tour(arguments.original, output).run();
    return kSuccess;
}

}  // namespace

void addTour(CLI::App& app, Run& run) {
    const auto arguments = std::make_shared<TourArguments>();
    CLI::App* const command = addCommand(app, "tour", "Show the main job on a copy of a model, step by step",
                                         "  kshmi tour cruise.json", arguments->original);
    runWith(*command, runTour, arguments, run);
}

}  // namespace kshmi
