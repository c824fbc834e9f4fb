#include "workbench/session/block_tree.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "workbench/session/script.h"

namespace workbench {

namespace {

using kestrel::Block;
using Segments = std::vector<std::u16string_view>;

Segments segmentsOf(std::u16string_view path) {
    Segments segments;
    for (std::size_t slash = path.find(u'/'); slash != std::u16string_view::npos; slash = path.find(u'/')) {
        segments.push_back(path.substr(0, slash));
        path.remove_prefix(slash + 1);
    }
    segments.push_back(path);
    return segments;
}

using PlacedBlock = std::pair<Segments, const Block*>;

std::vector<PlacedBlock> sortedBlocks(const kestrel::Model& model) {
    std::vector<PlacedBlock> blocks;
    blocks.reserve(model.blocks().size());
    for (const Block& block : model.blocks()) blocks.emplace_back(segmentsOf(block.path), &block);
    std::sort(blocks.begin(), blocks.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    return blocks;
}

std::vector<PortNode> portsOf(const Session& session, const Block& block) {
    std::vector<PortNode> ports;
    for (const std::u16string& name : block.outputs) {
        const int port = static_cast<int>(ports.size()) + 1;
        ports.push_back({port, name, session.isObserved(block, port)});
    }
    return ports;
}

std::vector<ItemNode> itemsOf(const Session& session, const Block& block) {
    std::vector<ItemNode> items;
    for (ChartItem& item : chartItemsOf(block)) {
        ItemNode node{std::move(item), false, {}};
        node.isObserved = session.isAnyObserved(block, node.item);
        for (const char16_t* const activity : kActivities)
            if (session.isObserved(block, node.item, activity)) node.activities.emplace_back(activity);
        items.push_back(std::move(node));
    }
    return items;
}

void addMissingParents(std::vector<BlockNode>& nodes, const Segments& previous, const Segments& segments) {
    std::size_t common = 0;
    while (common + 1 < segments.size() && common < previous.size() && previous[common] == segments[common]) ++common;
    for (; common + 1 < segments.size(); ++common) nodes.push_back({common, std::u16string(segments[common])});
}

}  // namespace

std::set<double> blocksWithBadges(const Session& session) {
    std::set<double> handles;
    ks_hmi::InstrumentedSignals::getPortsWithBadges(script::modelObject(session.model().name()).get(), handles);
    return handles;
}

std::vector<BlockNode> blockTree(const Session& session, std::size_t most) {
    const std::set<double> badges = blocksWithBadges(session);
    std::vector<BlockNode> nodes;
    Segments previous;
    for (auto& [segments, block] : sortedBlocks(session.model())) {
        if (nodes.size() > most) break;
        addMissingParents(nodes, previous, segments);
        nodes.push_back({segments.size() - 1, std::u16string(segments.back()), block, badges.contains(block->handle),
                         portsOf(session, *block), itemsOf(session, *block)});
        previous = segments;
    }
    return nodes;
}

void keepObserved(std::vector<BlockNode>& nodes) {
    for (BlockNode& node : nodes) {
        std::erase_if(node.ports, [](const PortNode& port) { return !port.isObserved; });
        std::erase_if(node.items, [](const ItemNode& item) { return !item.isObserved; });
    }
}

void keepFirst(std::vector<BlockNode>& nodes, std::size_t most) {
    const auto cut = [most](auto& list) {
        const std::size_t size = list.size();
        list.resize(std::min(size, most));
        return size - list.size();
    };
    for (BlockNode& node : nodes) {
        node.morePorts = cut(node.ports);
        node.moreItems = cut(node.items);
    }
}

void keepWanted(std::vector<BlockNode>& nodes, const std::function<bool(const BlockNode&)>& isWanted) {
    std::vector<BlockNode> kept;
    std::size_t childDepth = 0;  // of the node kept last: what is next above it is its parent
    for (auto node = nodes.rbegin(); node != nodes.rend(); ++node) {
        const bool isParent = node->depth < childDepth;
        if (isWanted(*node)) {
            kept.push_back(std::move(*node));
        } else if (isParent) {
            kept.push_back({node->depth, std::move(node->name), node->block, node->hasBadge});
        } else {
            continue;
        }
        childDepth = kept.back().depth;
    }
    std::reverse(kept.begin(), kept.end());
    nodes = std::move(kept);
}

}  // namespace workbench
