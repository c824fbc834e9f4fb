#pragma once

#include <cstddef>
#include <functional>
#include <limits>
#include <set>
#include <string>
#include <vector>

#include "workbench/session/session.h"

/// A model's blocks as a tree, with what is observed of them.
namespace workbench {

struct PortNode {
    int port = 0;  ///< 1-based
    std::u16string name;
    bool isObserved = false;
};

struct ItemNode {
    ChartItem item;
    bool isObserved = false;                 ///< in any activity
    std::vector<std::u16string> activities;  ///< the observed ones that are known
};

/// A block, or a part of a path on the way to blocks that has no block of its own.
struct BlockNode {
    std::size_t depth = 0;  ///< 0 at the top; a node's children follow it, one deeper
    std::u16string name;    ///< the last part of the path
    const kestrel::Block* block = nullptr;
    bool hasBadge = false;  ///< in an editor, as the host answers
    std::vector<PortNode> ports{};
    std::vector<ItemNode> items{};  ///< of a chart
    std::size_t morePorts = 0;      ///< how many `keepFirst` took away
    std::size_t moreItems = 0;
};

/// Handles of the blocks that carry a badge in an editor, as the host answers.
std::set<double> blocksWithBadges(const Session& session);

/// The whole tree from the top, parents before their children, siblings by name; no more than about `most` nodes.
/// It does not outlive the session's model.
std::vector<BlockNode> blockTree(const Session& session, std::size_t most = std::numeric_limits<std::size_t>::max());

/// Takes away the ports and chart items that are not observed.
void keepObserved(std::vector<BlockNode>& nodes);
/// Takes away each block's ports and chart items but the first so many.
void keepFirst(std::vector<BlockNode>& nodes, std::size_t most);
/// Takes away the nodes that are not wanted, except those on the way to one that is; these lose ports and items.
void keepWanted(std::vector<BlockNode>& nodes, const std::function<bool(const BlockNode&)>& isWanted);

}  // namespace workbench
