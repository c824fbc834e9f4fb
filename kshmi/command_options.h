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
/// Throws `Error` when nothing is selected, and for options that have nothing to apply to.
void requireSelection(const Selection& selection, bool isOtherwiseSelected);

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
