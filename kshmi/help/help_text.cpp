#include <fmt/format.h>

#include <algorithm>
#include <sstream>

#include "kshmi/help/help_page.h"
#include "workbench/text/columns.h"

namespace kshmi {

namespace {

constexpr std::size_t kUsualWidth = 80;
constexpr std::size_t kWidestTerm = 24;
constexpr std::size_t kTermIndent = 2;

std::string entryText(const HelpEntry& entry, std::size_t column, std::size_t width) {
    std::string text = std::string(kTermIndent, ' ') + entry.term;
    const std::size_t end = workbench::columnsOf(text);
    text += end + kTermIndent <= column ? std::string(column - end, ' ') : "\n" + std::string(column, ' ');
    return text + filled(entry.text, width - std::min(width, column), column) + '\n';
}

// Examples are indented, and stay as they can be copied.
std::string footerText(const std::string& footer, std::size_t width) {
    std::string text;
    std::istringstream lines(footer);
    for (std::string line; std::getline(lines, line);)
        text += '\n' + (line.starts_with(' ') ? line : filled(line, width, 0));
    return text;
}

std::size_t columnOf(const HelpPage& page) {
    std::size_t widest = 0;
    for (const HelpSection& section : page.sections)
        for (const HelpEntry& entry : section.entries) widest = std::max(widest, workbench::columnsOf(entry.term));
    return std::min(widest, kWidestTerm) + 2 * kTermIndent;
}

}  // namespace

std::string filled(std::string_view words, std::size_t width, std::size_t indent) {
    std::string text;
    std::size_t used = 0;
    while (!words.empty()) {
        const std::size_t end = std::min(words.find(' '), words.size());
        const std::string_view word = words.substr(0, end);
        const std::size_t columns = workbench::columnsOf(word);
        if (used > 0 && used + 1 + columns > width) {
            text += '\n' + std::string(indent, ' ');
            used = 0;
        }
        text += (used > 0 ? " " : "") + std::string(word);
        used += columns + (used > 0 ? 1U : 0U);
        words.remove_prefix(std::min(words.size(), end + 1));
    }
    return text;
}

std::string helpText(const HelpPage& page, std::size_t width) {
    constexpr std::size_t kNarrowest = 40;
    constexpr std::size_t kWidest = 100;
    const std::size_t line = std::clamp(width == 0 ? kUsualWidth : width, kNarrowest, kWidest);
    const std::size_t column = columnOf(page);
    std::string text = filled(page.summary, line, 0) + "\n\nUsage: ";
    text += filled(fmt::format("{} {}", page.command, page.usage), line - 7, 7) + '\n';
    for (const HelpSection& section : page.sections) {
        text += fmt::format("\n{}:\n", section.title);
        for (const HelpEntry& entry : section.entries) text += entryText(entry, column, line);
    }
    return page.footer.empty() ? text : text + footerText(page.footer, line) + '\n';
}

}  // namespace kshmi
