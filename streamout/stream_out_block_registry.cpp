#include "streamout/stream_out_block_registry.h"

#include <mutex>
#include <unordered_map>
#include <utility>

namespace streamout {

// Bodies inside the class: inline members are not exported.
class StreamOutBlockRegistry::Impl {
public:
    void registerBlock(const BlockContextPtr& ctx) {
        const std::lock_guard lock(m_mutex);
        const auto [position, isNew] = m_registeredBlocks.insert(ctx);
        try {
            // Kept: of several with one identifier the first is found, and any of them erases the entry when it goes.
            m_blocksById.try_emplace(ctx->getBlockId(), ctx);
        } catch (...) {
            if (isNew) m_registeredBlocks.erase(position);
            throw;
        }
    }

    void unregisterBlock(const BlockContextPtr& ctx) {
        // Declared before the lock, so that the context it holds dies after that is released; `ctx` outlives both.
        BlocksById::node_type entry;
        const std::lock_guard lock(m_mutex);
        // Kept: gone before it is asked; one that can no longer tell its identifier must not stay registered.
        m_registeredBlocks.erase(ctx);
        entry = m_blocksById.extract(ctx->getBlockId());
    }

    BlockContextSet getRegisteredBlocks() const {
        const std::lock_guard lock(m_mutex);
        return m_registeredBlocks;
    }

    bool isBlockAlreadyRegistered(const std::string& blockId) const {
        const std::lock_guard lock(m_mutex);
        return m_blocksById.contains(blockId);
    }

    BlockContextPtr getBlockForBlockId(const std::string& blockId) const {
        const std::lock_guard lock(m_mutex);
        const auto found = m_blocksById.find(blockId);
        return found == m_blocksById.end() ? nullptr : found->second;
    }

    void clear() {
        BlockContextSet blocks;
        BlocksById byId;
        const std::lock_guard lock(m_mutex);
        blocks.swap(m_registeredBlocks);
        byId.swap(m_blocksById);
    }

private:
    using BlocksById = std::unordered_map<std::string, BlockContextPtr>;

    BlockContextSet m_registeredBlocks;
    BlocksById m_blocksById;
    mutable std::mutex m_mutex;
};

StreamOutBlockRegistry::StreamOutBlockRegistry() : m_impl(std::make_unique<Impl>()) {}

// Cleared here, not by the implementation's own end: contexts that die now may still use the registry.
StreamOutBlockRegistry::~StreamOutBlockRegistry() { m_impl->clear(); }

std::string StreamOutBlockRegistry::getPluginName() {
    static const std::string name = "StreamOutBlockRegistry";
    return name;
}

void StreamOutBlockRegistry::registerBlock(BlockContextPtr ctx) {
    if (ctx) m_impl->registerBlock(ctx);
}

void StreamOutBlockRegistry::unregisterBlock(BlockContextPtr ctx) {
    if (ctx) m_impl->unregisterBlock(ctx);
}

StreamOutBlockRegistry::BlockContextSet StreamOutBlockRegistry::getRegisteredBlocks() const {
    return m_impl->getRegisteredBlocks();
}

bool StreamOutBlockRegistry::isBlockAlreadyRegistered(std::string blockId) const {
    return m_impl->isBlockAlreadyRegistered(blockId);
}

StreamOutBlockRegistry::BlockContextPtr StreamOutBlockRegistry::getBlockForBlockId(const std::string& blockId) const {
    return m_impl->getBlockForBlockId(blockId);
}

}  // namespace streamout
