#include "memory_host/kestrel/model.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

#include "host/text.h"

namespace kestrel {

namespace {

std::string quoted(const std::string& text) { return "\"" + text + "\""; }

void checkName(const std::u16string& name) {
    const std::string text = fl::i18n::to_string(name);
    if (name.empty()) throw ModelError("A model needs a name.", text);
    if (name.find_first_of(u"/:") != std::u16string::npos)
        throw ModelError("The model name " + quoted(text) + " contains '/' or ':', which separate names.", text);
}

[[noreturn]] void throwNoBlock(const std::u16string& modelName, std::u16string_view path) {
    const std::string text = fl::i18n::to_string(std::u16string(path));
    throw ModelError("Model " + quoted(fl::i18n::to_string(modelName)) + " has no block " + quoted(text) + ".", text);
}

void checkPath(std::u16string_view path) {
    if (isBlockPath(path)) return;
    const std::string text = fl::i18n::to_string(std::u16string(path));
    throw ModelError(quoted(text) + " is not a block path. A path consists of names separated by '/'.", text);
}

[[noreturn]] void throwPathTaken(const std::u16string& modelName, const Block& holder) {
    const std::string path = fl::i18n::to_string(holder.path);
    throw ModelError("Model " + quoted(fl::i18n::to_string(modelName)) + " has a block with the path " + quoted(path) +
                         " (element identifier " + quoted(holder.eid) + ").",
                     path);
}

[[noreturn]] void throwEidTaken(const std::u16string& modelName, const Block& holder) {
    throw ModelError("Model " + quoted(fl::i18n::to_string(modelName)) + " has a block with the element identifier " +
                         quoted(holder.eid) + " (path " + quoted(fl::i18n::to_string(holder.path)) + ").",
                     holder.eid);
}

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

Model::Model(std::u16string name) : m_name(std::move(name)) { checkName(m_name); }
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
        throw ModelError("The block " + quoted(text) + " needs an element identifier.", text);
    }
    Block& added = m_blocks.emplace_back(std::move(block));
    try {
        enterNames(added);
        added.handle = m_nextHandle ? m_nextHandle() : 0.0;
        enterHandle(added);
    } catch (...) {
        forget(added);
        m_blocks.pop_back();
        throw;
    }
    return added;
}

// Each text is hashed once: who has it already is found on the way.
void Model::enterNames(Block& block) {
    const auto [byPath, isNewPath] = m_byPath.emplace(block.path, &block);
    if (!isNewPath) throwPathTaken(m_name, *byPath->second);
    const auto [byEid, isNewEid] = m_byEid.emplace(block.eid, &block);
    if (!isNewEid) throwEidTaken(m_name, *byEid->second);
}

void Model::enterHandle(Block& block) {
    if (m_nextHandle) m_byHandle.emplace(block.handle, &block);
}

void Model::forget(const Block& block) noexcept {
    const auto byPath = m_byPath.find(block.path);
    if (byPath != m_byPath.end() && byPath->second == &block) m_byPath.erase(byPath);
    const auto byEid = m_byEid.find(block.eid);
    if (byEid != m_byEid.end() && byEid->second == &block) m_byEid.erase(byEid);
}

std::size_t Model::remove(std::u16string_view path) {
    const std::u16string removed(path);
    const auto isRemoved = [&](const Block& block) { return block.path == removed || isBelow(block.path, removed); };
    if (std::none_of(m_blocks.begin(), m_blocks.end(), isRemoved)) throwNoBlock(m_name, path);
    m_byPath.clear();
    m_byEid.clear();
    m_byHandle.clear();
    const std::size_t count = std::erase_if(m_blocks, isRemoved);
    for (Block& block : m_blocks) {
        enterNames(block);
        enterHandle(block);
    }
    return count;
}

std::size_t Model::move(std::u16string_view path, std::u16string_view newPath) {
    const std::string text = fl::i18n::to_string(std::u16string(newPath));
    checkPath(newPath);
    if (isBelow(newPath, path)) throw ModelError("A block cannot move below itself, to " + quoted(text) + ".", text);

    std::vector<std::pair<Block*, std::u16string>> moving;
    std::unordered_set<const Block*> isMoving;
    for (Block& block : m_blocks) {
        if (block.path != path && !isBelow(block.path, path)) continue;
        moving.emplace_back(&block, std::u16string(newPath) + block.path.substr(path.size()));
        isMoving.insert(&block);
    }
    if (moving.empty()) throwNoBlock(m_name, path);
    for (const auto& [block, movedPath] : moving) {
        const Block* there = findByPath(movedPath);
        if (there && !isMoving.contains(there)) throwPathTaken(m_name, *there);
    }
    std::vector<decltype(m_byPath)::node_type> entries;
    entries.reserve(moving.size());
    for (const auto& [block, movedPath] : moving) entries.push_back(m_byPath.extract(block->path));
    for (std::size_t i = 0; i < moving.size(); ++i) {
        moving[i].first->path = std::move(moving[i].second);
        entries[i].key() = moving[i].first->path;
        m_byPath.insert(std::move(entries[i]));
    }
    return moving.size();
}

Block& Model::blockAt(std::u16string_view path) {
    const auto found = m_byPath.find(path);
    if (found == m_byPath.end()) throwNoBlock(m_name, path);
    return *found->second;
}

void Model::setOutputs(std::u16string_view path, std::vector<std::u16string> outputs) {
    blockAt(path).outputs = std::move(outputs);
}

void Model::setChart(std::u16string_view path, Chart chart) { blockAt(path).chart = std::move(chart); }

const Block* Model::findByPath(std::u16string_view path) const noexcept {
    const auto found = m_byPath.find(path);
    return found == m_byPath.end() ? nullptr : found->second;
}

const Block* Model::findByEid(std::string_view eid) const noexcept {
    const auto found = m_byEid.find(eid);
    return found == m_byEid.end() ? nullptr : found->second;
}

const Block* Model::findByHandle(double handle) const noexcept {
    const auto found = m_byHandle.find(handle);
    return found == m_byHandle.end() ? nullptr : found->second;
}

std::u16string Model::fullPath(const Block& block) const {
    std::u16string full;
    full.reserve(m_name.size() + 1 + block.path.size());
    return full.append(m_name).append(1, u'/').append(block.path);
}

void Model::assignHandles(double (*nextHandle)()) {
    m_nextHandle = nextHandle;
    m_byHandle.clear();
    m_byHandle.reserve(m_blocks.size());
    for (Block& block : m_blocks) {
        block.handle = nextHandle();
        m_byHandle.emplace(block.handle, &block);
    }
}

}  // namespace kestrel
