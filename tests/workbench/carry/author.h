#pragma once

#include <algorithm>
#include <map>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "tests/workbench/compare/compare_test.h"

/// An author who changes a model in every way that authors do, and knows what became of each port.
namespace workbench::testing {

/// What identifiers are worth.
enum class Identifiers {
    kept,        ///< with the block, wherever it goes
    renewed,     ///< in each version
    positional,  ///< numbers in the order of the blocks
    ofPaths,     ///< follow from the paths
};
inline constexpr Identifiers kAllIdentifiers[] = {Identifiers::kept, Identifiers::renewed, Identifiers::positional,
                                                  Identifiers::ofPaths};

class Author {
public:
    /// A port that gets another name is another port: marks go by names.
    struct Port {
        int identity;
        std::string name;
    };
    struct TrueBlock {
        std::string path, eid;
        std::vector<Port> ports;
        int identity = 0;
    };

    Author(unsigned seed, Identifiers identifiers, int blocks) : m_random(seed), m_identifiers(identifiers) {
        for (int i = 0; i < blocks; ++i) add(ports(1 + draw(4), /*isFresh=*/false));
        for (TrueBlock& block : m_blocks)
            if (draw(4) == 0 && m_blocks.size() < 3U * static_cast<unsigned>(blocks)) m_twins.push_back(block.ports);
        for (const auto& twin : m_twins) add(copyOf(twin));
        each([&](const TrueBlock&, const Port& port, int) {
            if (draw(3) > 0) m_marked.insert(port.identity);
        });
        identify();
    }

    /// One version's work. What is removed and what is added do not look alike.
    void work(bool isAdding) {
        m_log.clear();
        const int first = isAdding ? static_cast<int>(Edit::rename) : 0;
        const int end = static_cast<int>(isAdding ? Edit::end : Edit::addFresh);
        for (int i = 1 + draw(4); i > 0; --i) edit(static_cast<Edit>(first + draw(end - first)));
        if (draw(3) == 0) std::shuffle(m_blocks.begin(), m_blocks.end(), m_random);
        identify();
    }
    /// Renames the model, all blocks and all that they are in, and puts everything in another order.
    void renameEverything() {
        m_log = {"everything"};
        std::map<std::string, std::string> parents;
        for (TrueBlock& block : m_blocks) {
            std::string& parent = parents[parentOf(block.path)];
            if (parent.empty()) parent = fmt::format("Area{}", m_next++);
            rename(block, fmt::format("{}/Part{}", parent, m_next++));
            shuffle(block);
        }
        std::shuffle(m_blocks.begin(), m_blocks.end(), m_random);
        m_name += "x";
        identify();
    }

    std::string version(bool hasMarks = false) const {
        std::vector<Block> blocks;
        std::vector<Mark> marks;
        for (const TrueBlock& block : m_blocks)
            blocks.push_back({block.path, block.eid, names(block), "", sourceOf(block)});
        each([&](const TrueBlock& block, const Port& port, int number) {
            if (hasMarks && m_marked.contains(port.identity))
                marks.push_back({uuidOf(port.identity), block.path, block.eid, number, port.name});
        });
        return model(m_name, blocks, marks);
    }

    struct Place {
        std::string path, eid, name;
        int number = 0, block = 0;
        std::multiset<std::string> around;  ///< all names of the block

        bool looksLike(const Place& other, bool hasEid) const {
            return path == other.path && name == other.name && around == other.around && (!hasEid || eid == other.eid);
        }
        std::string text() const { return fmt::format("{}:{}", path, number); }
    };
    /// Where the ports are, by the UUIDs of marks that they have or could have.
    std::map<std::string, Place> places() const {
        std::map<std::string, Place> all;
        each([&](const TrueBlock& block, const Port& port, int number) {
            const std::vector<std::string> around = names(block);
            all[uuidOf(port.identity)] = {block.path, block.eid,      port.name,
                                          number,     block.identity, {around.begin(), around.end()}};
        });
        return all;
    }
    std::size_t markCount() const { return m_marked.size(); }
    Identifiers identifiers() const { return m_identifiers; }
    const std::vector<std::string>& log() const { return m_log; }

private:
    // Removals first, additions last.
    enum class Edit : std::uint8_t {
        remove,
        merge,
        rename,
        exchangeNames,
        rotateNames,
        respell,
        moveUpOrDown,
        reorderPorts,
        addPort,
        removePort,
        givePortAway,
        renamePort,
        split,
        addFresh,
        addTwin,
        addCommon,
        replace,
        end,
    };

    int draw(int count) { return std::uniform_int_distribution<int>(0, count - 1)(m_random); }
    TrueBlock& any() { return m_blocks[static_cast<std::size_t>(draw(static_cast<int>(m_blocks.size())))]; }
    static std::string uuidOf(int identity) { return fmt::format("u{}", identity); }
    static std::string parentOf(const std::string& path) {
        return path.substr(0, path.rfind('/') == std::string::npos ? 0 : path.rfind('/'));
    }
    static std::string lastOf(const std::string& path) { return path.substr(path.rfind('/') + 1); }
    std::string sourceOf(const TrueBlock& block) const {
        return m_identifiers == Identifiers::ofPaths ? block.path : "";
    }
    static std::vector<std::string> names(const TrueBlock& block) {
        std::vector<std::string> all;
        for (const Port& port : block.ports) all.push_back(port.name);
        return all;
    }
    template <class Visit>
    void each(Visit visit) const {
        for (const TrueBlock& block : m_blocks)
            for (std::size_t i = 0; i < block.ports.size(); ++i) visit(block, block.ports[i], static_cast<int>(i) + 1);
    }

    Port port(bool isFresh) {
        static constexpr const char* kCommon[] = {"y", "out", "valid", "level", "flow", "speed"};
        const bool isCommon = !isFresh && draw(3) == 0;
        const int identity = m_next++;
        return {identity, isCommon ? kCommon[draw(6)] : fmt::format("v{}", identity)};
    }
    std::vector<Port> ports(int count, bool isFresh) {
        std::vector<Port> made;
        for (int i = 0; i < count; ++i) {
            Port one = port(isFresh);
            // Now and then two of one name.
            const auto isSame = [&](const Port& other) { return other.name == one.name; };
            if (draw(8) == 0 || std::ranges::none_of(made, isSame)) made.push_back(one);
        }
        return made;
    }
    std::vector<Port> copyOf(std::vector<Port> ports) {
        for (Port& port : ports) port.identity = m_next++;
        return ports;
    }
    std::string freePath(const std::string& wish) {
        std::string path = wish;
        const auto isTaken = [&](const TrueBlock& block) { return block.path == path; };
        while (path.empty() || std::ranges::any_of(m_blocks, isTaken)) path = fmt::format("{}{}", wish, m_next++);
        return path;
    }
    void add(std::vector<Port> ports) {
        static constexpr const char* kNames[] = {"Tank", "Pump", "Valve", "Probe"};
        add(fmt::format("{}/{} {}", kAreas[draw(3)], kNames[draw(4)], draw(4)), std::move(ports));
    }
    void add(const std::string& wish, std::vector<Port> ports) {
        const int identity = m_next++;
        m_blocks.push_back({freePath(wish), fmt::format("e{}", identity), std::move(ports), identity});
    }
    void rename(TrueBlock& block, const std::string& wish) {
        m_log.push_back(block.path + " => " + wish);
        block.path.clear();
        block.path = freePath(wish);
    }
    // Ports of one name stay in their order: nobody could tell.
    void shuffle(TrueBlock& block) {
        std::map<std::string, std::vector<Port>> inOrder;
        for (const Port& port : block.ports) inOrder[port.name].push_back(port);
        std::shuffle(block.ports.begin(), block.ports.end(), m_random);
        std::map<std::string, std::size_t> next;
        for (Port& port : block.ports) port = inOrder[port.name][next[port.name]++];
    }
    void identify() {
        for (std::size_t i = 0; i < m_blocks.size(); ++i) {
            if (m_identifiers == Identifiers::renewed) m_blocks[i].eid = fmt::format("e{}", m_next++);
            if (m_identifiers == Identifiers::positional) m_blocks[i].eid = std::to_string(i + 1);
            if (m_identifiers == Identifiers::ofPaths) m_blocks[i].eid = "#" + m_blocks[i].path;
        }
    }

    void edit(Edit what);
    void editNames(Edit what, TrueBlock& block);
    void editPorts(Edit what, TrueBlock& block);
    void editStructure(Edit what, const TrueBlock& block);
    void addMore(Edit what, TrueBlock& block);
    void exchangeNames(TrueBlock& one, TrueBlock& other);
    void remove(const std::string& path) {
        std::erase_if(m_blocks, [&](const TrueBlock& one) { return one.path == path; });
    }

    static constexpr const char* kAreas[] = {"Engine", "Body", "Plant"};

    std::mt19937 m_random;
    Identifiers m_identifiers;
    std::string m_name = "car";
    std::vector<TrueBlock> m_blocks;
    std::vector<std::vector<Port>> m_twins;
    std::set<int> m_marked;
    std::vector<std::string> m_log;
    int m_next = 0;
};

}  // namespace workbench::testing
