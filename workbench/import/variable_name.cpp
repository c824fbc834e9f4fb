#include "workbench/import/variable_name.h"

#include <cstddef>

namespace workbench {

namespace {

// The position behind the quote that ends a quoted name; `from` when none does.
std::size_t behindQuoted(std::string_view name, std::size_t from) noexcept {
    for (std::size_t i = from + 1; i < name.size(); ++i) {
        if (name[i] == '\\')
            ++i;
        else if (name[i] == '\'')
            return i + 1;
    }
    return from;
}

bool opens(char c) noexcept { return c == '(' || c == '['; }
bool closes(char c) noexcept { return c == ')' || c == ']'; }

// Positions of the dots that separate names. Brackets that are never closed are ordinary characters.
std::vector<std::size_t> separators(std::string_view name, bool areBracketsMeant) {
    std::vector<std::size_t> dots;
    std::size_t depth = 0;
    bool isAtStart = true;
    for (std::size_t i = 0; i < name.size(); ++i) {
        const std::size_t behind = isAtStart && name[i] == '\'' ? behindQuoted(name, i) : i;
        isAtStart = false;
        if (behind != i) {
            i = behind - 1;
        } else if (areBracketsMeant && opens(name[i])) {
            ++depth;
            isAtStart = true;
        } else if (depth > 0 && closes(name[i])) {
            --depth;
        } else if (name[i] == '.') {
            isAtStart = true;
            if (depth == 0) dots.push_back(i);
        }
    }
    return depth == 0 ? dots : separators(name, false);
}

bool hasEmptyPart(std::string_view name, const std::vector<std::size_t>& dots) noexcept {
    std::size_t start = 0;
    for (const std::size_t dot : dots) {
        if (dot == start) return true;
        start = dot + 1;
    }
    return start == name.size();
}

}  // namespace

VariableName splitVariableName(std::string_view name) {
    const std::vector<std::size_t> dots = separators(name, true);
    if (dots.empty() || hasEmptyPart(name, dots)) return {{}, name};
    return {name.substr(0, dots.back()), name.substr(dots.back() + 1)};
}

std::vector<std::string_view> groupParts(std::string_view group) {
    std::vector<std::string_view> parts;
    if (group.empty()) return parts;
    std::size_t start = 0;
    for (const std::size_t dot : separators(group, true)) {
        parts.push_back(group.substr(start, dot - start));
        start = dot + 1;
    }
    parts.push_back(group.substr(start));
    return parts;
}

std::string joinVariableName(std::string_view group, std::string_view leaf) {
    std::string name(group);
    if (!group.empty()) name += '.';
    return name += leaf;
}

}  // namespace workbench
