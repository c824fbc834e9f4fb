#pragma once

#include <boost/json/error.hpp>
#include <cstddef>
#include <string>
#include <string_view>

namespace workbench {

/// Where the parser stopped.
struct JsonStop {
    std::string_view piece;  ///< what it was given last: a line or less
    std::size_t used = 0;    ///< how much of that it took
    char before = 0;         ///< the last character in front of the piece that is no blank; 0 for none
    bool isInText = false;   ///< whether the piece continues a text
    bool isAfterKey = false;
};

/// Why a text is no JSON, for messages; `code` is the parser's.
std::string describeMistake(const boost::json::error_code& code, const JsonStop& stop);

/// The last character that is no blank; `before` when there is none.
char lastCharacter(std::string_view text, char before) noexcept;
/// Whether a text is still open at the end, when it was at the start or was not.
bool endsInText(std::string_view text, bool isInText) noexcept;

}  // namespace workbench
