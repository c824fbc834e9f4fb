#pragma once

#include <boost/json/error.hpp>
#include <cstddef>
#include <string>
#include <string_view>

namespace workbench {

/// Why a text is no JSON, for messages: `code` is the parser's, which stopped at the position `used` of `piece`.
std::string describeMistake(const boost::json::error_code& code, std::string_view piece, std::size_t used);

}  // namespace workbench
