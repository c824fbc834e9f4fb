#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "kshmi/commands.h"
#include "kshmi/output.h"

/// What the descriptions of the commands have in common. Arguments outlive the parser.
namespace kshmi {

/// The command that the user chose, with its arguments.
using Run = std::function<int(const Output&)>;

/// Lets decimal digits pass that are a number in the range, and takes leading zeros off: the parser would read the
/// number as octal. For `transform`.
CLI::Validator wholeNumber(std::uint32_t least = 0, std::uint32_t most = std::numeric_limits<std::uint32_t>::max());
/// A command on a model file, with its help.
CLI::App* addCommand(CLI::App& app, const char* name, const char* help, const char* examples, std::string& file);
CLI::Option* addReferences(CLI::App& command, std::vector<std::string>& references);
void addReferenceOptions(CLI::App& command, ReferenceOptions& options);
/// "--all" and "--except".
void addPatterns(CLI::App& command, Selection& selection);
void addDryRun(CLI::App& command, bool& isDryRun);

/// What `work` returns. A refusal that names neither the file nor an option in front is given the file's name.
int inFile(const std::string& file, const std::function<int()>& work);

/// Once the user has chosen the command, makes `run` call the function with its arguments, as they then are.
template <typename Arguments>
void runWith(CLI::App& command, int (*function)(const Arguments&, const Output&), const Arguments& arguments,
             Run& run) {
    command.callback([function, &arguments, &run] {
        run = [function, &arguments](const Output& output) {
            if constexpr (requires { arguments.file; })
                return inFile(arguments.file, [&] { return function(arguments, output); });
            else
                return function(arguments, output);
        };
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
