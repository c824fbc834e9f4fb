#include "workbench/import/block_hierarchy.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "workbench/import/import_error.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

std::string keyOf(std::size_t parent, std::string_view name) { return (std::to_string(parent) + '/').append(name); }

}  // namespace

BlockHierarchy::Node BlockHierarchy::at(Node parent, std::string_view name) {
    const std::string key = keyOf(parent, name);
    if (const auto found = m_byName.find(key); found != m_byName.end()) return found->second;
    const Node node = add(parent, name);
    m_byName.emplace(key, node);
    return node;
}

BlockHierarchy::Node BlockHierarchy::add(Node parent, std::string_view name) {
    if (m_places.size() >= kMostNodes)
        failImport({m_file}, fmt::format("has more than {} levels of names", kMostNodes), "import a part of it");
    std::string shown(name);
    std::replace(shown.begin(), shown.end(), '/', '_');
    std::string unique = shown;
    auto [taken, isFree] = m_taken.try_emplace(keyOf(parent, shown), 2);
    std::size_t& next = taken->second;
    while (!isFree) {
        unique = fmt::format("{} ({})", shown, next++);
        isFree = m_taken.try_emplace(keyOf(parent, unique), 2).second;
    }
    m_places.push_back({parent, toUtf16(unique)});
    return m_places.size() - 1;
}

kestrel::Block BlockHierarchy::blockAt(Node node) {
    std::vector<Node> way;
    for (; node != kTop; node = m_places[node].parent) way.push_back(node);
    kestrel::Block block;
    for (auto step = way.rbegin(); step != way.rend(); ++step) {
        if (!block.path.empty()) block.path += u'/';
        block.path += m_places[*step].name;
    }
    m_textSize += block.path.size();
    if (m_textSize > kMostText) failImport({m_file}, "its blocks' paths take too much memory", "import a part of it");
    return block;
}

}  // namespace workbench
