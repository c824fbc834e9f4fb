#pragma once

#include <CLI/CLI.hpp>
#include <optional>
#include <string>
#include <vector>

#include "kshmi/print/output.h"
#include "workbench/find/selecting.h"
#include "workbench/find/selecting_clients.h"

/// What a command works on: "REF", "--from", "--all", "--except", "--kind", "--activity" and "--ssid", the same for
/// every command.
namespace kshmi {

/// A selection as it is on the command line.
struct SelectionArguments {
    workbench::Selection selection;
    std::vector<std::string> from;   ///< files with a reference a line; "-" is the standard input
    std::vector<std::string> kinds;  ///< words
    std::optional<std::vector<workbench::ListedReference>> listed;  ///< what `from` holds, once it was read
};

/// Describes all of it to the parser.
void addSelection(CLI::App& command, SelectionArguments& arguments);

/// "--client", "--type", "--state", "--dangling" and "--foreign".
void addClientSelection(CLI::App& command, workbench::ClientSelection& selection);

/// Whether anything but exceptions is selected.
bool isAnythingSelected(const SelectionArguments& arguments);
/// The same, or exceptions or kinds.
bool isNarrowed(const SelectionArguments& arguments);
/// Throws `workbench::Error` for options that have nothing to apply to; `isGiven` as below.
void requireApplicable(const SelectionArguments& arguments, bool isGiven);
/// Throws `workbench::Error` when nothing is selected and nothing else `isGiven`; also for options that have nothing to
/// apply to. `others` are further options that select, for the message.
void requireSelection(const SelectionArguments& arguments, bool isGiven, const std::string& others = {});

/// Reads the lists, for selections in several models. Throws `workbench::Error` for one that cannot be read.
void readLists(SelectionArguments& arguments);
/// What is selected in the model: lists are read unless they were, and an exception that leaves nothing out is warned
/// of. Throws `workbench::Error` as `workbench::select`, and for a list that cannot be read.
workbench::Selected select(const kestrel::Model& model, const SelectionArguments& arguments, const Output& output);
/// The same; everything in the model when nothing but exceptions and kinds is given.
workbench::Selected selectOrAll(const kestrel::Model& model, const SelectionArguments& arguments, const Output& output);

/// Positions of the clients that the two mean together, ascending. Throws `workbench::Error` as `selectClients`.
workbench::Positions selectedClients(const workbench::Session& session, const SelectionArguments& arguments,
                                     const workbench::ClientSelection& clients, const Output& output);

}  // namespace kshmi
