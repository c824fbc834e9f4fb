#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "kshmi/commands/command_options.h"
#include "kshmi/commands/commands.h"
#include "kshmi/commands/selecting.h"
#include "kshmi/print/json/json_document.h"
#include "kshmi/print/output.h"

/// Commands that look at one model file or at several.
namespace kshmi {

/// A command on model files: MODEL, and the words behind it that end in ".json".
CLI::App* addLookingCommand(CLI::App& app, const char* name, const char* help, const char* examples, std::string& file);

/// The first file, and those that are taken off the front of the references.
std::vector<std::string> takeFiles(const std::string& first, std::vector<std::string>& references);

/// Adds what a file has to answer to the JSON, or prints it where there is none. Returns the exit code.
using Look = std::function<int(const std::string& file, JsonMembers* json, const Output& output)>;

/// Looks at every file, each under a heading if they are several; JSON is an object with a list of them. Of several,
/// what one fails with is told, also in its place in the JSON, and the others have their turns. Returns the highest
/// exit code. Throws what a single file fails with.
int lookAtFiles(std::string_view command, const std::vector<std::string>& files, bool isJson, const Output& output,
                const Look& look);

/// Once the user has chosen the command, makes `run` have the function look at its files. First of all, `require`
/// throws `workbench::Error` for arguments that do not make sense, whatever the files are.
template <class Arguments>
void runOnFiles(CLI::App& command,
                int (*function)(const Arguments&, const std::string& file, JsonMembers* json, const Output&),
                const std::shared_ptr<Arguments>& arguments, Run& run, void (*require)(const Arguments&)) {
    command.callback([function, arguments, require, &command, &run] {
        auto files = takeFiles(arguments->file, arguments->what.selection.references);
        run = [function, arguments, require, files = std::move(files),
               name = command.get_name()](const Output& output) {
            require(*arguments);
            requireOneInput(files, arguments->what.from);
            readLists(arguments->what);
            return lookAtFiles(name, files, arguments->isJson, output,
                               [&](const std::string& file, JsonMembers* json, const Output& to) {
                                   return function(*arguments, file, json, to);
                               });
        };
    });
}

}  // namespace kshmi
