#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "kshmi/commands/commands.h"
#include "kshmi/print/output.h"
#include "kshmi/print/reports/change_report.h"
#include "workbench/change/marking.h"
#include "workbench/change/observing.h"
#include "workbench/model_file/model_file.h"
#include "workbench/text/error.h"
#include "workbench/text/text.h"

/// What the descriptions of the commands have in common.
namespace kshmi {

/// Lets decimal digits pass that are a number in the range, and takes leading zeros off: the parser would read the
/// number as octal. For `transform`.
CLI::Validator wholeNumber(std::uint32_t least = 0, std::uint32_t most = std::numeric_limits<std::uint32_t>::max());
/// Lets one of the words pass; the refusal asks for what was meant.
CLI::Validator oneOf(const std::vector<std::string>& words);
/// A command on a model file, with its help.
CLI::App* addCommand(CLI::App& app, const char* name, const char* help, const char* examples, std::string& file);
/// What MODEL is for a command that changes it.
inline constexpr const char* kStreamedModel =
    "model file; - reads the model from standard input and writes the changed one to standard output";
/// "--dry-run", "--json" and "--all-lines".
void addChangeOptions(CLI::App& command, ChangeOptions& options);
/// What can be said of a signal: "--name", "--decimation" and so on.
void addSettings(CLI::App& command, workbench::SignalSettings& settings);
/// What can be said of a client but its kind: "--params", "--update-rate" and so on.
struct ClientArguments {
    std::optional<std::string> type;
    std::optional<std::string> params;  ///< JSON, as docs/model-file.md maps it
    std::optional<std::uint32_t> updateRate;
    std::optional<std::uint32_t> channel;
    std::optional<bool> isImaginary;
    std::optional<std::string> busLeaf;
};
void addClientSettings(CLI::App& command, ClientArguments& arguments);
/// Throws `workbench::Error` for parameters that are no value and for a kind without a name.
workbench::ClientSettings settingsOf(const ClientArguments& arguments);

/// Saves a model, in place of that version of the file only if there is one to replace, or sends it where models go for
/// "-". Returns the output for telling of it, which is beside a model that was sent.
Output saveModel(const std::string& target, const workbench::ModelFile& file, const Output& output,
                 std::optional<workbench::FileVersion> replaced = std::nullopt);
/// Throws `workbench::Error` when standard input is among the files and lists more than once.
void requireOneInput(const std::vector<std::string>& files, const std::vector<std::string>& lists);

/// Throws `workbench::Error` when a reference is a model file, for commands that work on one model.
void requireNoFiles(const std::vector<std::string>& references);

/// What `work` returns. A refusal that names neither the file nor an option in front is given the file's name.
int inFile(const std::string& file, const std::function<int()>& work);

/// What the error says, and its remedy as a command.
std::string messageOf(const workbench::Error& error);

/// Once the user has chosen the command, makes `run` call the function with its arguments, as they then are.
template <class Arguments>
void runWith(CLI::App& command, std::type_identity_t<std::function<int(const Arguments&, const Output&)>> function,
             const std::shared_ptr<Arguments>& arguments, Run& run) {
    command.callback([function, arguments, &run] {
        run = [function, arguments](const Output& output) {
            if constexpr (requires { arguments->file; }) {
                tellWork(output, arguments->file);
                if constexpr (requires { arguments->what.selection; })
                    requireNoFiles(arguments->what.selection.references);
                if constexpr (requires { arguments->what.from; })
                    requireOneInput({arguments->file}, arguments->what.from);
                return inFile(arguments->file, [&] { return function(*arguments, output); });
            } else {
                return function(*arguments, output);
            }
        };
    });
}

}  // namespace kshmi
