#include "tests/workbench/carry/author.h"

namespace workbench::testing {

void Author::edit(Edit what) {
    TrueBlock& block = any();
    m_log.push_back(fmt::format("{}: edit {}", block.path, static_cast<int>(what)));
    if (what < Edit::rename) return editStructure(what, TrueBlock(block));
    if (what < Edit::reorderPorts) return editNames(what, block);
    if (what < Edit::split) return editPorts(what, block);
    what == Edit::split ? editStructure(what, TrueBlock(block)) : addMore(what, block);
}

void Author::exchangeNames(TrueBlock& one, TrueBlock& other) {
    m_log.push_back(one.path + " <=> " + other.path);
    std::swap(one.path, other.path);
}

void Author::editNames(Edit what, TrueBlock& block) {
    const std::string path = block.path, parent = parentOf(path);
    std::string last = lastOf(path);
    if (what == Edit::rename) rename(block, fmt::format("{}/Part {}", kAreas[draw(3)], m_next++));
    if (what == Edit::exchangeNames || what == Edit::rotateNames) {
        TrueBlock& other = any();
        exchangeNames(block, other);
        if (what == Edit::rotateNames) exchangeNames(other, any());
    }
    if (what == Edit::respell) {
        for (char& c : last) c = c == ' ' ? '_' : static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        rename(block, path.substr(0, path.size() - last.size()) + last);
    }
    if (what == Edit::moveUpOrDown)
        rename(block, draw(2) == 0 ? fmt::format("{}_{}", parent, last)
                                   : fmt::format("{}Sub/{}", parent.empty() ? "" : parent + "/", last));
}

void Author::editPorts(Edit what, TrueBlock& block) {
    const bool hasMore = block.ports.size() > 1;
    if (what == Edit::reorderPorts) shuffle(block);
    if (what == Edit::addPort)
        block.ports.insert(block.ports.begin() + draw(static_cast<int>(block.ports.size())), port(true));
    if (what == Edit::removePort && hasMore) block.ports.erase(block.ports.begin());
    // A port goes, and a neighbour gets one of that name.
    if (what == Edit::givePortAway && hasMore) {
        const std::string name = block.ports.back().name;
        block.ports.pop_back();
        any().ports.push_back({m_next++, name});
    }
    if (what == Edit::renamePort) block.ports.front() = port(true);
}

void Author::editStructure(Edit what, const TrueBlock& block) {
    if (what == Edit::split ? block.ports.size() < 2 : m_blocks.size() < 5) return;
    remove(block.path);
    if (what == Edit::merge) {
        TrueBlock& other = any();
        other.ports.insert(other.ports.end(), block.ports.begin(), block.ports.end());
        if (draw(2) == 0) rename(other, fmt::format("{}/Both {}", kAreas[draw(3)], m_next++));
    }
    if (what != Edit::split) return;
    const auto half = block.ports.begin() + static_cast<std::ptrdiff_t>(block.ports.size() / 2);
    add(block.path + " part", {block.ports.begin(), half});
    add(block.path + " part", {half, block.ports.end()});
}

void Author::addMore(Edit what, TrueBlock& block) {
    if (what == Edit::addTwin) return add(copyOf(block.ports));
    if (what != Edit::replace) return add(ports(1 + draw(3), what == Edit::addFresh));
    // Another block in the place of one that moves away.
    const std::string path = block.path;
    std::vector<Port> made = ports(1 + draw(3), /*isFresh=*/true);
    made.push_back({m_next++, block.ports.front().name});
    rename(block, fmt::format("{}/Old {}", kAreas[draw(3)], m_next++));
    add(path, std::move(made));
}

}  // namespace workbench::testing
