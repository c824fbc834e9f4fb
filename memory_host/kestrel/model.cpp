#include "memory_host/kestrel/model.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

#include "host/text.h"
#include "memory_host/kestrel/text_index.h"

namespace kestrel {

namespace {

std::string inQuotes(const std::string& text) { return "\"" + text + "\""; }

void checkName(const std::u16string& name) {
    const std::string text = fl::i18n::to_string(name);
    if (name.empty()) throw ModelError("A model needs a name.", text);
    if (name.find_first_of(u"/:") != std::u16string::npos)
        throw ModelError("The model name " + inQuotes(text) + " contains '/' or ':', which separate names.", text);
}

[[noreturn]] void throwNoBlock(const std::u16string& modelName, std::u16string_view path) {
    const std::string text = fl::i18n::to_string(std::u16string(path));
    throw ModelError("Model " + inQuotes(fl::i18n::to_string(modelName)) + " has no block " + inQuotes(text) + ".",
                     text);
}

void checkPath(std::u16string_view path) {
    if (isBlockPath(path)) return;
    const std::string text = fl::i18n::to_string(std::u16string(path));
    throw ModelError(inQuotes(text) + " is not a block path. A path consists of names separated by '/'.", text);
}

[[noreturn]] void throwPathTaken(const std::u16string& modelName, const Block& holder) {
    const std::string path = fl::i18n::to_string(holder.path);
    throw ModelError("Model " + inQuotes(fl::i18n::to_string(modelName)) + " has a block with the path " +
                         inQuotes(path) + " (element identifier " + inQuotes(holder.eid) + ").",
                     path);
}

[[noreturn]] void throwEidTaken(const std::u16string& modelName, const Block& holder) {
    throw ModelError("Model " + inQuotes(fl::i18n::to_string(modelName)) + " has a block with the element identifier " +
                         inQuotes(holder.eid) + " (path " + inQuotes(fl::i18n::to_string(holder.path)) + ").",
                     holder.eid);
}

std::u16string_view pathOf(const Block& block) { return block.path; }
std::string_view eidOf(const Block& block) { return block.eid; }

bool isBelow(std::u16string_view path, std::u16string_view parent) {
    return path.size() > parent.size() && path.starts_with(parent) && path[parent.size()] == u'/';
}

}  // namespace

ModelError::ModelError(const std::string& text, std::string subject)
    : std::runtime_error(text), m_subject(std::move(subject)) {}

bool isBlockPath(std::u16string_view text) noexcept {
    return !text.empty() && text.front() != u'/' && text.back() != u'/' &&
           text.find(u"//") == std::u16string_view::npos;
}

struct Model::Indexes {
    TextIndex<Block, std::u16string_view, pathOf> byPath;
    TextIndex<Block, std::string_view, eidOf> byEid;
};

Model::Model(std::u16string name) : m_name(std::move(name)), m_indexes(std::make_unique<Indexes>()) {
    checkName(m_name);
}
Model::Model(Model&&) noexcept = default;
Model& Model::operator=(Model&&) noexcept = default;
Model::~Model() = default;

void Model::rename(std::u16string name) {
    checkName(name);
    m_name = std::move(name);
}

const Block& Model::add(Block block) {
    checkPath(block.path);
    if (block.eid.empty()) {
        const std::string text = fl::i18n::to_string(block.path);
        throw ModelError("The block " + inQuotes(text) + " needs an element identifier.", text);
    }
    checkNames(block);
    Block& added = m_blocks.emplace_back(std::move(block));
    try {
        enterNames(m_blocks.size() - 1);
    } catch (...) {
        m_indexes->byPath.erase(m_blocks, m_blocks.size() - 1);
        m_blocks.pop_back();
        throw;
    }
    added.handle = m_nextHandle ? m_nextHandle() : 0.0;
    return added;
}

void Model::checkNames(const Block& block) const {
    if (const auto holder = m_indexes->byPath.searched(m_blocks, block.path)) throwPathTaken(m_name, m_blocks[*holder]);
    if (const auto holder = m_indexes->byEid.searched(m_blocks, block.eid)) throwEidTaken(m_name, m_blocks[*holder]);
}

void Model::enterNames(std::size_t position) {
    m_indexes->byPath.insert(m_blocks, position);
    m_indexes->byEid.insert(m_blocks, position);
}

std::size_t Model::remove(std::u16string_view path) {
    const std::u16string removed(path);
    const auto isRemoved = [&](const Block& block) { return block.path == removed || isBelow(block.path, removed); };
    if (std::none_of(m_blocks.begin(), m_blocks.end(), isRemoved)) throwNoBlock(m_name, path);
    m_indexes->byPath.clear();
    m_indexes->byEid.clear();
    const std::size_t count = std::erase_if(m_blocks, isRemoved);
    for (std::size_t position = 0; position < m_blocks.size(); ++position) enterNames(position);
    return count;
}

std::size_t Model::move(std::u16string_view path, std::u16string_view newPath) {
    const std::string text = fl::i18n::to_string(std::u16string(newPath));
    checkPath(newPath);
    if (isBelow(newPath, path)) throw ModelError("A block cannot move below itself, to " + inQuotes(text) + ".", text);

    std::vector<std::pair<std::size_t, std::u16string>> moving;
    std::unordered_set<const Block*> isMoving;
    for (std::size_t position = 0; position < m_blocks.size(); ++position) {
        const Block& block = m_blocks[position];
        if (block.path != path && !isBelow(block.path, path)) continue;
        moving.emplace_back(position, std::u16string(newPath) + block.path.substr(path.size()));
        isMoving.insert(&block);
    }
    if (moving.empty()) throwNoBlock(m_name, path);
    for (const auto& [position, movedPath] : moving) {
        const Block* there = findByPath(movedPath);
        if (there && !isMoving.contains(there)) throwPathTaken(m_name, *there);
    }
    auto byPath = m_indexes->byPath;  // An index that grows may find no memory.
    for (const auto& [position, movedPath] : moving) byPath.erase(m_blocks, position);
    for (const auto& [position, movedPath] : moving) byPath.insert(movedPath, position);
    m_indexes->byPath = std::move(byPath);
    for (auto& [position, movedPath] : moving) m_blocks[position].path = std::move(movedPath);
    return moving.size();
}

Block& Model::blockAt(std::u16string_view path) {
    const auto found = m_indexes->byPath.find(m_blocks, path);
    if (!found) throwNoBlock(m_name, path);
    return m_blocks[*found];
}

void Model::setOutputs(std::u16string_view path, std::vector<std::u16string> outputs) {
    blockAt(path).outputs = std::move(outputs);
}

void Model::setChart(std::u16string_view path, Chart chart) { blockAt(path).chart = std::move(chart); }

const Block* Model::findByPath(std::u16string_view path) const noexcept {
    const auto found = m_indexes->byPath.find(m_blocks, path);
    return found ? &m_blocks[*found] : nullptr;
}

const Block* Model::findByEid(std::string_view eid) const noexcept {
    const auto found = m_indexes->byEid.find(m_blocks, eid);
    return found ? &m_blocks[*found] : nullptr;
}

// Handles ascend, by 1 when one block is loaded after the other.
const Block* Model::findByHandle(double handle) const noexcept {
    if (!m_nextHandle || m_blocks.empty()) return nullptr;
    const double distance = handle - m_blocks.front().handle;
    if (!(distance >= 0.0 && handle <= m_blocks.back().handle)) return nullptr;
    const auto guess = static_cast<std::size_t>(distance);
    if (guess < m_blocks.size() && m_blocks[guess].handle == handle) return &m_blocks[guess];
    const auto found = std::lower_bound(m_blocks.begin(), m_blocks.end(), handle,
                                        [](const Block& block, double wanted) { return block.handle < wanted; });
    return found != m_blocks.end() && found->handle == handle ? &*found : nullptr;
}

std::u16string Model::fullPath(const Block& block) const {
    std::u16string full;
    full.reserve(m_name.size() + 1 + block.path.size());
    return full.append(m_name).append(1, u'/').append(block.path);
}

void Model::assignHandles(double (*nextHandle)()) {
    m_nextHandle = nextHandle;
    for (Block& block : m_blocks) block.handle = nextHandle();
}

}  // namespace kestrel
