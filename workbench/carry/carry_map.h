#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "workbench/model_file/model_file.h"

/// What a person says about where blocks and ports have gone: a CSV file of two columns, old and new, each
///   a block      a/b,c/d
///   a port       a/b:speed,c/d:velocity    (or a chart's item: chart:State/Path)
///   all below    a/b/*,c/d/*
/// with paths below the model (its name may stand in front). An empty new name says that the old one is gone. Lines
/// that start with '#' are comments, and the first line may be the heading "old,new".
namespace workbench {

struct CsvCell;

class CarryMap {
public:
    struct Target {
        const kestrel::Block* block = nullptr;  ///< null when the old one is said to be gone
        std::u16string name = {};               ///< of the port or item
        std::size_t line = 0;
    };

    CarryMap() = default;
    /// `file` stands in messages. Throws `Error` with file and line for other columns, names that a model does not
    /// have and old names that appear twice.
    CarryMap(std::string file, std::string_view text, const ModelFile& old, const kestrel::Model& next);

    /// What is said of the block itself, or else, with the longest path, of all below one; null when nothing is.
    const Target* block(std::u16string_view oldPath) const;
    /// What is said of a port or item; null when nothing is.
    const Target* source(std::u16string_view oldPath, std::u16string_view name) const;

private:
    void read(const std::vector<CsvCell>& row, std::size_t line);
    void readPrefix(std::u16string before, std::u16string after, std::size_t line);
    bool isKnown(const std::u16string& oldPath) const { return m_oldPaths.contains(oldPath); }
    Target targetOf(const std::u16string& text, bool isSource, std::size_t line) const;
    void add(std::unordered_map<std::u16string, Target>& entries, const std::u16string& key, Target target,
             std::string_view text) const;
    /// The block and the name of "block:name"; nothing when it is no such text.
    template <class IsBlock>
    static std::optional<std::pair<std::u16string, std::u16string>> split(const std::u16string& text, IsBlock isBlock);
    [[noreturn]] void fail(std::size_t line, const std::string& text) const;

    std::string m_file;
    const kestrel::Model* m_old = nullptr;
    const kestrel::Model* m_next = nullptr;
    /// Of the old model and of its parked marks.
    std::unordered_map<std::u16string, const kestrel::Block*> m_oldPaths;
    std::unordered_map<std::u16string, Target> m_blocks;
    std::unordered_map<std::u16string, Target> m_sources;
    std::unordered_map<std::u16string, Target> m_below;  ///< of blocks, from the prefixes
    std::unordered_map<std::u16string, std::size_t> m_prefixLines;
    std::unordered_map<std::u16string, std::size_t> m_prefixLengths;  ///< of what `m_below` came from
};

/// Whether a block has a port, state or datum of that name.
bool hasSource(const kestrel::Block& block, const std::u16string& name);

}  // namespace workbench
