#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "host/api.h"

/// The modelling environment's side of the memory host: models, their blocks and who has them open.
/// Thread: the interpreter thread only.
namespace kestrel {

/// A model that cannot be as asked. The text names the thing; `subject` is the offending text alone.
class OX_API ModelError : public std::runtime_error {
public:
    ModelError(const std::string& text, std::string subject);  ///< `text` is UTF-8, one sentence.
    /// UTF-8: a path, an identifier or a model name.
    const std::string& subject() const noexcept { return m_subject; }

private:
    std::string m_subject;
};

/// Whether a text can be a block's path: names, none of them empty, with '/' between them.
OX_API bool isBlockPath(std::u16string_view text) noexcept;

/// A state inside a chart: its path below the chart ("Cruise/Hold") and its identifier within the chart.
struct ChartState {
    std::u16string path;     ///< unique in the chart
    std::uint32_t ssid = 0;  ///< 1 or more, unique in the chart
};

/// A datum inside a chart.
struct ChartData {
    std::u16string name;     ///< unique in the chart
    std::uint32_t ssid = 0;  ///< 1 or more, unique in the chart
};

/// What a chart block contains. The chart itself answers to the identifier 0.
struct Chart {
    std::vector<ChartState> states;  ///< in the order shown
    std::vector<ChartData> data;     ///< in the order shown
};

/// One block. Paths and element identifiers are relative to the model (no model name in front).
struct Block {
    std::u16string path;                       ///< "Engine/Throttle"
    std::string eid;                           ///< UTF-8; stays with the block wherever it moves
    double handle = 0.0;                       ///< fractional, new at each load; 0.0 while the model is not loaded
    std::vector<std::u16string> outputs = {};  ///< names of the output ports; port number = position, from 1
    std::optional<Chart> chart = {};           ///< of a chart block only
    std::optional<std::string> source = {};    ///< UTF-8; what an imported block is called where it comes from
};

/// A model: its name and its blocks in the order they were added. Look-ups by path and element identifier take constant
/// time; so do those by handle until a block of the model is removed while it is loaded, then logarithmic. Blocks stay
/// where they are in memory until one is removed.
class OX_API Model {
public:
    /// Throws `ModelError` for a name that is empty or contains '/' or ':'.
    explicit Model(std::u16string name);
    Model(Model&&) noexcept;             ///< Leaves an empty shell, to be destroyed or assigned to.
    Model& operator=(Model&&) noexcept;  ///< As the move constructor.
    Model(const Model&) = delete;
    Model& operator=(const Model&) = delete;
    ~Model();

    const std::u16string& name() const noexcept { return m_name; }  ///< Never empty.
    /// Throws as the constructor; the name is then unchanged.
    void rename(std::u16string name);

    /// Appends a block. Throws `ModelError` for a text that is no path or is taken, and for an empty or
    /// taken element identifier; the model is then unchanged. The parent need not exist. In a model that is loaded
    /// the block gets a handle.
    const Block& add(Block block);
    /// Removes the block at `path` and all blocks below it. Throws `ModelError` when there is none. Returns how many.
    std::size_t remove(std::u16string_view path);
    /// Gives the block at `path`, which need not be there itself, and all blocks below it ("path/...") new paths.
    /// Throws `ModelError` when there is no block, the new text is no path, lies below the old one, or any path that
    /// would result is taken; the model is then unchanged. Returns how many blocks moved.
    std::size_t move(std::u16string_view path, std::u16string_view newPath);
    /// Replaces the names of a block's output ports. Throws `ModelError` when there is no such block.
    void setOutputs(std::u16string_view path, std::vector<std::u16string> outputs);
    /// Makes the block a chart of these contents. Throws `ModelError` when there is no such block.
    void setChart(std::u16string_view path, Chart chart);

    const std::deque<Block>& blocks() const noexcept { return m_blocks; }  ///< In the order they were added.
    /// Null when there is none.
    const Block* findByPath(std::u16string_view path) const noexcept;
    const Block* findByEid(std::string_view eid) const noexcept;  ///< As `findByPath`.
    const Block* findByHandle(double handle) const noexcept;      ///< As `findByPath`; 0.0 finds none.
    /// The name in front: "Model/Engine/Throttle".
    std::u16string fullPath(const Block& block) const;

private:
    friend class Models;
    void assignHandles(double (*nextHandle)());
    Block& blockAt(std::u16string_view path);
    void checkNames(const Block& block) const;
    void enterNames(std::size_t position);

    struct Indexes;
    std::u16string m_name;
    double (*m_nextHandle)() = nullptr;  ///< null while the model is not loaded; each is greater than those before
    std::deque<Block> m_blocks;
    std::unique_ptr<Indexes> m_indexes;
};

}  // namespace kestrel
