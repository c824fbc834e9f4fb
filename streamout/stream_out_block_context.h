#pragma once

#include <string>

#include "streamout/export.h"

namespace streamout {

/// Where and how one stream-out block records its data. A context is known by its address, so it is not
/// copied; libraries share it by `std::shared_ptr`. All texts of type `std::string` are UTF-8.
///
/// Thread: contexts carry no lock. A registered one is read from several threads, so nothing that
/// `getBlockId` or `getSourceID` reads may change meanwhile.
class STREAMOUT_EXPORT StreamOutBlockContext {
public:
    StreamOutBlockContext();
    StreamOutBlockContext(const StreamOutBlockContext&) = delete;
    StreamOutBlockContext& operator=(const StreamOutBlockContext&) = delete;
    virtual ~StreamOutBlockContext();

    /// The source identifier of the block.
    virtual std::string getSourceID() const = 0;
    /// What the registry finds the context by. The registry asks while it holds its lock: an answer must
    /// not call the registry, and should stay the same as long as the context is registered.
    virtual std::string getBlockId() const = 0;
};

}  // namespace streamout
