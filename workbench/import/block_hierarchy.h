#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "memory_host/kestrel/model.h"

namespace workbench {

/// Gives foreign names, which may hold anything, places in a model. A '/' in a name is written '_'; where that makes
/// two names below the same parent alike, the later one gets a number behind it: "a (2)".
class BlockHierarchy {
public:
    using Node = std::size_t;
    static constexpr Node kTop = 0;
    /// Nodes, and UTF-16 code units of all paths together.
    static constexpr std::size_t kMostNodes = 4'000'000;
    static constexpr std::size_t kMostText = std::size_t{1} << 28U;

    /// `file` stands in messages.
    explicit BlockHierarchy(std::string file) : m_file(std::move(file)) {}

    /// The place of this name below `parent`; made when it is not there. Throws `Error` beyond `kMostNodes`.
    Node at(Node parent, std::string_view name);
    /// A new place of this name below `parent`, even where there is one.
    Node add(Node parent, std::string_view name);
    /// A block at this place, with its path only. Throws `Error` when all paths together exceed `kMostText`.
    kestrel::Block blockAt(Node node);

    /// Whether a name had to be changed.
    static bool isChanged(std::string_view name) noexcept { return name.find('/') != std::string_view::npos; }

private:
    struct Place {
        Node parent;
        std::u16string name;
    };

    std::string m_file;
    std::vector<Place> m_places{{kTop, {}}};
    // The keys are the parent's number and the name.
    std::unordered_map<std::string, Node> m_byName;
    std::unordered_map<std::string, std::size_t> m_taken;  ///< and the number to try for the next one
    std::size_t m_textSize = 0;
};

}  // namespace workbench
