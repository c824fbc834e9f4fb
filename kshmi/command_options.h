#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <string>
#include <vector>

#include "kshmi/commands.h"
#include "kshmi/output.h"

/// What the descriptions of the commands have in common. Arguments outlive the parser.
namespace kshmi {

/// The command that the user chose, with its arguments.
using Run = std::function<int(const Output&)>;

/// Lets whole numbers of 32 bits pass.
CLI::Range wholeNumber();
/// A command on a model file, with its help.
CLI::App* addCommand(CLI::App& app, const char* name, const char* help, const char* examples, std::string& file);
CLI::Option* addReferences(CLI::App& command, std::vector<std::string>& references);
void addReferenceOptions(CLI::App& command, ReferenceOptions& options);
/// "--all" and "--except".
void addPatterns(CLI::App& command, Selection& selection);
void addDryRun(CLI::App& command, bool& isDryRun);

/// Once the user has chosen the command, makes `run` call the function with its arguments, as they then are.
template <typename Arguments>
void runWith(CLI::App& command, int (*function)(const Arguments&, const Output&), const Arguments& arguments,
             Run& run) {
    command.callback([function, &arguments, &run] {
        run = [function, &arguments](const Output& output) { return function(arguments, output); };
    });
}

/// The arguments of what an editor does besides marking.
struct EditorArguments {
    ObserveArguments observe;
    UnobserveArguments unobserve;
    ClientsArguments clients;
    PortsArguments ports;
    RenameArguments rename;
    MoveArguments move;
    RenumberArguments renumber;
};
void addEditorCommands(CLI::App& app, EditorArguments& arguments, Run& run);

}  // namespace kshmi
