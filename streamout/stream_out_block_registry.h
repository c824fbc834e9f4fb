#pragma once

#include <memory>
#include <string>
#include <unordered_set>

#include "streamout/export.h"
#include "streamout/stream_out_block_context.h"

namespace streamout {

/// The stream-out blocks that are recording: their contexts, found by block identifier.
///
/// Thread: any; the operations of one registry are serialised by its lock. Contexts are asked for their
/// identifier under that lock, and destroyed outside it: a context's destructor may use the registry, its
/// `getBlockId` must not. Destroying the registry must not run beside another operation on it; a context that
/// dies with it still sees it, empty, and must not register anything.
/// Throws `std::system_error` when the lock fails, `std::bad_alloc` when memory runs out, and what a context's
/// `getBlockId` throws. The registry is then as it was before, but for a context that cannot tell its identifier while
/// it is unregistered: it has left already, and an entry under its identifier stays.
class STREAMOUT_EXPORT StreamOutBlockRegistry {
public:
    using BlockContextPtr = std::shared_ptr<StreamOutBlockContext>;  ///< Shared, never null in a registry.
    using BlockContextSet = std::unordered_set<BlockContextPtr>;     ///< In no order.

    StreamOutBlockRegistry();
    ~StreamOutBlockRegistry();
    StreamOutBlockRegistry(const StreamOutBlockRegistry&) = delete;
    StreamOutBlockRegistry& operator=(const StreamOutBlockRegistry&) = delete;

    /// "StreamOutBlockRegistry".
    static std::string getPluginName();

    /// Shares `ctx` until it is unregistered; once is enough, null is ignored. Of several contexts with one
    /// identifier all are registered, but the first stays the one that is found by it.
    void registerBlock(BlockContextPtr ctx);
    /// Forgets `ctx` and whatever context its identifier finds: when a second context with that
    /// identifier is unregistered, the first is still registered, but no longer found by it. So it is also with a
    /// context that was never registered. Null is ignored.
    void unregisterBlock(BlockContextPtr ctx);

    /// A copy, as of now; whoever holds it keeps the contexts alive.
    BlockContextSet getRegisteredBlocks() const;
    /// Whether the identifier finds a context. False for the one whose entry went with another context's.
    bool isBlockAlreadyRegistered(std::string blockId) const;
    /// The context that the identifier finds, shared; null when there is none.
    BlockContextPtr getBlockForBlockId(const std::string& blockId) const;

private:
    class Impl;
    std::unique_ptr<Impl> m_impl;
};

}  // namespace streamout
