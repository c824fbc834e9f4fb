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
    std::string leftOutFor{};  ///< the options that leave out the rest
};

/// How much is shown of all there is of one kind.
struct Share {
    const char* what;  ///< "signal"
    const char* key;   ///< in JSON
    std::size_t shown = 0;
    std::size_t all = 0;
};
/// Of signals, clients, blocks, ports and chart items.
std::vector<Share> sharesOf(const ShownModel& shown);

/// As tables and a tree.
void printShown(const ShownModel& shown, const Output& output);

}  // namespace kshmi
