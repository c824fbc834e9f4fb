#include <string>
#include <string_view>
#include <unordered_set>

#include "host/object_system.h"

namespace hos::internal {

InternedName makeInterned(std::string_view text) {
    // Never destroyed: names live as long as the process.
    static auto& names = *new std::unordered_set<std::string>;
    if (text.empty()) return {};
    return InternedName(&*names.emplace(text).first);
}

}  // namespace hos::internal
