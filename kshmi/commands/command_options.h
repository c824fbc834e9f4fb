#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "kshmi/commands/commands.h"
#include "kshmi/print/output.h"
#include "workbench/find/selecting.h"
#include "workbench/text/error.h"

/// What the descriptions of the commands have in common.
namespace kshmi {

/// Lets decimal digits pass that are a number in the range, and takes leading zeros off: the parser would read the
/// number as octal. For `transform`.
CLI::Validator wholeNumber(std::uint32_t least = 0, std::uint32_t most = std::numeric_limits<std::uint32_t>::max());
/// A command on a model file, with its help.
CLI::App* addCommand(CLI::App& app, const char* name, const char* help, const char* examples, std::string& file);
CLI::Option* addReferences(CLI::App& command, std::vector<std::string>& references);
void addReferenceOptions(CLI::App& command, workbench::ReferenceOptions& options);
/// "--all" and "--except".
void addPatterns(CLI::App& command, workbench::Selection& selection);
void addDryRun(CLI::App& command, bool& isDryRun);

/// What `work` returns. A refusal that names neither the file nor an option in front is given the file's name.
int inFile(const std::string& file, const std::function<int()>& work);

/// What the error says, and its remedy as a command.
std::string messageOf(const workbench::Error& error);

/// Once the user has chosen the command, makes `run` call the function with its arguments, as they then are.
template <typename Arguments>
void runWith(CLI::App& command, int (*function)(const Arguments&, const Output&),
             const std::shared_ptr<Arguments>& arguments, Run& run) {
    command.callback([function, arguments, &run] {
        run = [function, arguments](const Output& output) {
            if constexpr (requires { arguments->file; })
                return inFile(arguments->file, [&] { return function(*arguments, output); });
            else
                return function(*arguments, output);
        };
    });
}

}  // namespace kshmi
