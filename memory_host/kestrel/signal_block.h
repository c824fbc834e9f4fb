#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "host/api.h"
#include "memory_host/kestrel/model.h"

/// Which block a signal is on: asked by the modelling side and by everybody who looks at saved signals.
namespace kestrel {

/// When the block's path is asked as well as its element identifier, which stays with the block wherever it moves.
enum class PathFallback : std::uint8_t {
    withoutEid,  ///< only where there is no identifier: one that names no block means that the block is gone
    afterEid,    ///< also where the identifier gave no answer
};

/// What `byEid` answers for the identifier, or `byPath` as the fall-back says. Both take their text and answer with
/// the same type, which tests false where there is no answer.
template <class Path, class ByEid, class ByPath>
auto onSignalBlock(std::string_view eid, const Path& path, PathFallback fallback, ByEid byEid, ByPath byPath) {
    auto answer = eid.empty() ? decltype(byEid(eid))() : byEid(eid);
    return !answer && (eid.empty() || fallback == PathFallback::afterEid) ? byPath(path) : answer;
}

/// The block in the model, both texts without the model's name; null when there is none.
OX_API const Block* signalBlock(const Model& model, std::string_view eid, const std::u16string& path,
                                PathFallback fallback = PathFallback::withoutEid);

}  // namespace kestrel
