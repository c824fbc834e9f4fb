#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// Texts in the columns of a terminal. They are printable: no character of theirs moves the cursor elsewhere.
namespace workbench {

/// Columns that the text takes: two for a wide character, none for a combining mark, one for any other.
std::size_t columnsOf(std::string_view text);

/// The text, or of one that takes more than `most` columns its beginning and its end with "..." between them.
std::string shortened(std::string_view text, std::size_t most);

/// The text in lines of at most `width` columns (at least 4), broken behind blanks and punctuation where there is some;
/// no more than `mostLines`, for which a long text is shortened. One line, perhaps empty, at least.
std::vector<std::string> wrapped(std::string_view text, std::size_t width, std::size_t mostLines);

}  // namespace workbench
