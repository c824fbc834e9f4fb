#pragma once

#include <string_view>

namespace ks_hmi_foundation {

inline constexpr std::u16string_view kPathSeparator = u"/";
inline constexpr std::string_view kEIDSeparator = ":";

/// What follows `modelName` and `separator` in `reference`, or all of it when it does not start with them or
/// ends with them.
template <class CharT>
constexpr std::basic_string_view<CharT> withoutModelPrefix(std::basic_string_view<CharT> reference,
                                                           std::basic_string_view<CharT> modelName,
                                                           std::basic_string_view<CharT> separator) {
    // Kept: what is only the prefix stays whole, and an empty name takes a leading separator off.
    const std::size_t length = modelName.size() + separator.size();
    const bool hasPrefix = length < reference.size() && reference.substr(0, modelName.size()) == modelName &&
                           reference.substr(modelName.size(), separator.size()) == separator;
    return hasPrefix ? reference.substr(length) : reference;
}

}  // namespace ks_hmi_foundation
