#pragma once

#include <string>
#include <string_view>

namespace orvex {

/// UTF-8 to UTF-16. Each maximal subpart of an ill-formed sequence becomes one U+FFFD. Zero bytes are kept.
std::u16string utf16Of(std::string_view text);
/// UTF-16 to UTF-8. A lone surrogate becomes U+FFFD.
std::string utf8Of(std::u16string_view text);

}  // namespace orvex
