#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "workbench/session/session.h"

namespace workbench {

/// A mark that has gone after its name.
struct FollowedMark {
    std::size_t position = 0;  ///< 0-based
    std::u16string from;       ///< full names
    std::u16string to;
    std::u16string name;
};

/// Lets the marks whose names stand at one other place of their block, and at that one only, follow them. In the set's
/// order. Marks whose names are gone or at several places stay as they are.
std::vector<FollowedMark> followNames(Session& session);

}  // namespace workbench
