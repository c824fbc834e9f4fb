#pragma once

#include <span>
#include <string>
#include <string_view>

namespace kshmi {

/// What "kshmi help NAME" tells beside the commands. Paragraphs have a blank line between them; lines that start with
/// blanks stay as they are.
struct Topic {
    std::string name;
    std::string title;
    std::string text;
};

/// Where the text of a line starts that begins with blanks: behind its term, if it has one. 0 for other lines.
std::size_t textStart(std::string_view line);

/// All of them, in the order of a list.
std::span<const Topic> topics();
/// Null when there is none of that name.
const Topic* topicOf(std::string_view name);
/// As a text; lines are `width` columns wide at most, where words permit.
std::string topicText(const Topic& topic, std::size_t width);

}  // namespace kshmi
