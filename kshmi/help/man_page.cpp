#include "kshmi/help/man_page.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <sstream>

#include "kshmi/help/help_page.h"
#include "kshmi/help/topics.h"

namespace kshmi {

namespace {

std::string roff(std::string_view text) {
    std::string result;
    for (const char c : text) {
        if (c == '\\')
            result += "\\e";
        else if (c == '-')
            result += "\\-";
        else
            result += c;
    }
    return result.starts_with('.') || result.starts_with('\'') ? "\\&" + result : result;
}

std::string upper(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
    return text;
}

std::string entry(std::string_view term, std::string_view text) {
    return fmt::format(".TP\n.B {}\n{}\n", roff(term), roff(text));
}

// Paragraphs and terms with their texts; other lines that start with blanks are as they are.
std::string paragraphs(std::string_view text) {
    std::string result;
    std::istringstream lines{std::string(text)};
    bool isAsItIs = false;
    for (std::string line; std::getline(lines, line);) {
        const std::size_t start = textStart(line);
        const std::string term = line.substr(0, line.find_last_not_of(' ', start > 0 ? start - 1 : 0) + 1);
        const bool isTerm = start > 0 && !term.empty();
        if ((start > 0 && !isTerm) != isAsItIs) {
            isAsItIs = !isAsItIs;
            result += isAsItIs ? ".nf\n" : ".fi\n";
        }
        if (isTerm)
            result += entry(std::string_view(term).substr(term.find_first_not_of(' ')), line.substr(start));
        else
            result += line.empty() ? ".PP\n" : roff(line) + '\n';
    }
    return isAsItIs ? result + ".fi\n" : result;
}

std::string entries(const HelpSection& section) {
    std::string text;
    for (const HelpEntry& one : section.entries) text += entry(one.term, one.text);
    return text;
}

// Options that every command has are told once.
constexpr const char* kShared = "Options of every command";

std::string commandPart(const CLI::App& app) {
    const HelpPage page = helpPageOf(app);
    std::string text = fmt::format(".SS \"{} {}\"\n{}.\n", roff(page.command), roff(page.usage), roff(page.summary));
    for (const HelpSection& section : page.sections)
        if (section.title != kShared) text += entries(section);
    return fmt::format("{}.PP\n{}", text, paragraphs(page.footer));
}

std::string sharedOptions(const CLI::App& app) {
    for (const HelpSection& section : helpPageOf(app).sections)
        if (section.title == kShared) return entries(section);
    return {};
}

}  // namespace

std::string manPage(const CLI::App& app, std::string_view version) {
    const HelpPage page = helpPageOf(app);
    std::string text = fmt::format(
        ".TH KSHMI 1 \"\" \"kshmi {}\" \"User Commands\"\n.SH NAME\nkshmi \\- {}\n"
        ".SH SYNOPSIS\n.B kshmi\n.I COMMAND\n.RI [ OPTIONS ]\n.IR MODEL \\ ...\n.SH DESCRIPTION\n{}.\n.SH COMMANDS\n",
        roff(version), roff(page.summary), roff(page.summary));
    for (const CLI::App* const command : runnableCommandsOf(app)) text += commandPart(*command);
    text += ".SH OPTIONS OF EVERY COMMAND\n" + sharedOptions(app);
    for (const Topic& topic : topics()) text += fmt::format(".SH {}\n{}", upper(topic.title), paragraphs(topic.text));
    return text;
}

}  // namespace kshmi
