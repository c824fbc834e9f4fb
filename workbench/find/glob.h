#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "workbench/session/signal_source.h"

namespace workbench {

/// A shell pattern over characters, whatever the locale: "*" stands for any text, "?" for one character, "[a-z]" and
/// "[!a-z]" for one of a set and one outside it, "\" makes the next character an ordinary one. A "[" without its "]"
/// is an ordinary character.
class Pattern {
public:
    /// UTF-8.
    explicit Pattern(std::string_view text);
    bool matches(std::u32string_view name) const noexcept;

private:
    std::u32string m_text;
};

/// Whether a pattern has a "[" that stands for a set.
bool hasUnescapedBracket(std::string_view pattern) noexcept;

/// Patterns that match whole paths: "block/path" with or without "model/" or a "/" in front, and with ":number" or
/// ":name" behind for a port. A block's path alone matches its ports and, for a chart, the chart itself. "*" matches
/// across "/".
class Globs {
public:
    explicit Globs(const std::vector<std::string>& patterns) : m_patterns(patterns.begin(), patterns.end()) {}
    /// Whether any pattern matches any name of the port or chart item.
    bool matches(const kestrel::Model& model, const SignalSource& source) const;

private:
    std::vector<Pattern> m_patterns;
};

}  // namespace workbench
