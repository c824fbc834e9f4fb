#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "kshmi/print/output.h"
#include "workbench/session/block_tree.h"
#include "workbench/session/session.h"

namespace kshmi {

/// What of a model is shown.
struct ShownModel {
    const workbench::Session* session = nullptr;
    std::vector<std::size_t> signals;  ///< positions, ascending
    std::vector<std::size_t> clients;
    std::vector<workbench::BlockNode> blocks;
    std::size_t limit = 0;     ///< of a block's ports in the text; 0 for none
    std::string leftOutFor{};  ///< the options that leave out the rest
};

/// "3 of 12 signals, 75 of 87 blocks" are not shown; empty when all are.
std::string leftOutOf(const ShownModel& shown);

/// As tables and a tree.
void printShown(const ShownModel& shown, const Output& output);

}  // namespace kshmi
