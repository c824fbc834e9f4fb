#include "kshmi/command_options.h"

namespace kshmi {

namespace {

void addObserve(CLI::App& app, ObserveArguments& arguments, Run& run) {
    CLI::App* const command =
        addCommand(app, "observe", "Let observers watch marked ports and chart items, and save the model",
                   "  kshmi observe cruise.json Sensors/Speed:1 --type ks_scope_observer\n"
                   "  kshmi observe cruise.json 'Set Speed:1' --type ks_gauge_observer --params '{\"max\": 180}'\n"
                   "  kshmi observe cruise.json Plant:1 --type ks_logger_observer --update-rate 10 --channel 2",
                   arguments.file);
    addReferences(*command, arguments.references)->required();
    addReferenceOptions(*command, arguments.options);
    command->add_option("--type", arguments.type, "kind of observer")->required();
    command->add_option("--params", arguments.params, "parameters as JSON, written as in a model file")
        ->type_name("JSON");
    command->add_option("--update-rate", arguments.updateRate, "update rate")->transform(wholeNumber());
    command->add_option("--channel", arguments.channel, "which element of the signal")->transform(wholeNumber());
    command->add_flag("--imaginary", arguments.isImaginary, "watch the imaginary part");
    command->add_option("--bus-leaf", arguments.busLeaf, "path of the leaf inside a bus signal")->type_name("PATH");
    addDryRun(*command, arguments.isDryRun);
    runWith(*command, runObserve, arguments, run);
}

void addUnobserve(CLI::App& app, UnobserveArguments& arguments, Run& run) {
    CLI::App* const command =
        addCommand(app, "unobserve", "Remove observers and save the model; --type narrows what else is selected",
                   "  kshmi unobserve cruise.json Sensors/Speed:1 --type ks_scope_observer\n"
                   "  kshmi unobserve cruise.json --all 'cruise/Plant/*'\n"
                   "  kshmi unobserve cruise.json --dangling\n"
                   "  kshmi unobserve cruise.json --unused --dry-run",
                   arguments.file);
    addReferences(*command, arguments.selection.references);
    addPatterns(*command, arguments.selection);
    addReferenceOptions(*command, arguments.selection.options);
    command->add_option("--type", arguments.types, "observers of this kind; may be repeated")->allow_extra_args(false);
    command->add_option("--uuid", arguments.uuids, "the observer with this UUID; may be repeated")
        ->allow_extra_args(false);
    command->add_flag("--dangling", arguments.isDangling, "observers whose signal is gone");
    command->add_flag("--unused", arguments.isUnused,
                      "what the host does not need: observers of deprecated kinds and those whose signal is gone");
    addDryRun(*command, arguments.isDryRun);
    runWith(*command, runUnobserve, arguments, run);
}

void addClients(CLI::App& app, ClientsArguments& arguments, Run& run) {
    CLI::App* const command =
        addCommand(app, "clients", "List a model's observers with what they watch, as the host finds it now",
                   "  kshmi clients cruise.json\n  kshmi clients cruise.json --json", arguments.file);
    command->add_flag("--json", arguments.isJson, "print JSON");
    runWith(*command, runClients, arguments, run);
}

void addPorts(CLI::App& app, PortsArguments& arguments, Run& run) {
    CLI::App* const command = addCommand(app, "ports", "List the observed ports as an editor asks for them",
                                         "  kshmi ports cruise.json\n"
                                         "  kshmi ports cruise.json --below Sensors --no-hidden\n"
                                         "  kshmi ports cruise.json --visual-type dial --json",
                                         arguments.file);
    command->add_option("--below", arguments.below, "only at and below this path")->type_name("PATH");
    command->add_option("--visual-type", arguments.visualType, "only signals that feed this kind of display");
    command->add_flag("--hidden,!--no-hidden", arguments.isHiddenListed,
                      "list hidden signals, too (so it is unless --no-hidden is given)");
    command->add_flag("--json", arguments.isJson, "print JSON");
    runWith(*command, runPorts, arguments, run);
}

void addRename(CLI::App& app, RenameArguments& arguments, Run& run) {
    CLI::App* const command =
        addCommand(app, "rename", "Give a model a new name, tell the interface manager, and save the model",
                   "  kshmi rename cruise.json cruise_v2\n"
                   "  kshmi rename cruise.json draft final   (two renames without a validation in between)",
                   arguments.file);
    command
        ->add_option("NEW-NAME", arguments.names,
                     "new name; several are given one after the other; a name that starts with \"-\" goes after \"--\"")
        ->required();
    addDryRun(*command, arguments.isDryRun);
    runWith(*command, runRename, arguments, run);
}

void addMove(CLI::App& app, MoveArguments& arguments, Run& run) {
    CLI::App* const command = addCommand(
        app, "move", "Move a block and all below it; signals and observers follow, and the model is saved",
        "  kshmi move cruise.json Sensors/Speed 'Inputs/Wheel Speed'\n  kshmi move cruise.json Plant Vehicle --dry-run",
        arguments.file);
    command->add_option("BLOCK", arguments.block, "path of the block")->required();
    command->add_option("NEW-PATH", arguments.newPath, "its new path, parents included")->required();
    addDryRun(*command, arguments.isDryRun);
    runWith(*command, runMove, arguments, run);
}

void addRenumber(CLI::App& app, RenumberArguments& arguments, Run& run) {
    CLI::App* const command =
        addCommand(app, "renumber", "Renumber or delete a block's output ports; signals follow, the model is saved",
                   "  kshmi renumber cruise.json Sensors 2,1     (ports 1 and 2 change places)\n"
                   "  kshmi renumber cruise.json Sensors 1,0,2   (of three: port 2 is deleted, 3 becomes 2)\n"
                   "  kshmi renumber cruise.json Sensors ''      (nothing changes)",
                   arguments.file);
    command->add_option("BLOCK", arguments.block, "path of the block")->required();
    command
        ->add_option("NUMBERS", arguments.numbers,
                     "new numbers of ports 1, 2, ... with commas between, 0 for a deleted one; further ports keep "
                     "theirs; with a 0, give numbers for all ports")
        ->required();
    addDryRun(*command, arguments.isDryRun);
    runWith(*command, runRenumber, arguments, run);
}

}  // namespace

void addEditorCommands(CLI::App& app, EditorArguments& arguments, Run& run) {
    addObserve(app, arguments.observe, run);
    addUnobserve(app, arguments.unobserve, run);
    addClients(app, arguments.clients, run);
    addPorts(app, arguments.ports, run);
    addRename(app, arguments.rename, run);
    addMove(app, arguments.move, run);
    addRenumber(app, arguments.renumber, run);
}

}  // namespace kshmi
