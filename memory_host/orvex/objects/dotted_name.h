#pragma once

#include <string_view>

namespace orvex {

/// "Model" of "Kestrel.Model"; the whole name when it has no dot. A view into it.
inline std::string_view lastPart(std::string_view dottedName) noexcept {
    return dottedName.substr(dottedName.rfind('.') + 1);
}

}  // namespace orvex
