#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace workbench {

/// A dotted name taken apart. `group + "." + leaf` is the name; without a group, `leaf` alone is.
struct VariableName {
    std::string_view group;  ///< "engine.cylinder[2]"; empty when the name has no hierarchy
    std::string_view leaf;   ///< "pressure"
};

/// Splits a variable's name at its last dot that separates names: not inside brackets, as in "der(a.b)" and "m[1.2]",
/// nor inside a quoted name, as in "'a.b'". A name with an empty part, like "a..b", stays whole.
VariableName splitVariableName(std::string_view name);

/// The parts of a group, outermost first; none of an empty group.
std::vector<std::string_view> groupParts(std::string_view group);

/// The name that `splitVariableName` took apart.
std::string joinVariableName(std::string_view group, std::string_view leaf);

}  // namespace workbench
