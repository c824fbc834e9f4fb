#pragma once

#include <string>

#include "kshmi/commands/commands.h"

/// What every command can be told.
namespace kshmi {

struct EveryCommand {
    std::string color = "auto";
    bool isQuiet = false;
};

/// Adds these options to the program and, as far as they have none of that name, to its commands and theirs.
void addToEveryCommand(CLI::App& app, EveryCommand& options);

/// Runs the command as the options ask for, telling of progress where `err` is a terminal.
int runAsAsked(const Run& run, const EveryCommand& options, const Output& output);

}  // namespace kshmi
