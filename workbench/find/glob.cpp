#include "workbench/find/glob.h"

#include <algorithm>
#include <optional>

#include "host/unicode.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

std::u32string toUtf32(std::u16string_view text) {
    std::u32string result;
    result.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) result += ks_host::takeCodePoint(text, at);
    return result;
}

// Walks over the elements of a pattern.
class Cursor {
public:
    explicit Cursor(std::u32string_view rest) : m_rest(rest) {}

    bool isEnd() const noexcept { return m_rest.empty(); }
    bool takeStar() noexcept { return take(U'*'); }

    // Steps over the next element, which stands for one character; false when not for this one.
    bool takeOne(char32_t character) noexcept {
        if (isEnd()) return false;
        if (take(U'?')) return true;
        if (m_rest.front() == U'[')
            if (const std::optional<bool> isIn = takeSet(character)) return *isIn;
        return literal() == character;
    }

private:
    bool take(char32_t wanted) noexcept {
        if (isEnd() || m_rest.front() != wanted) return false;
        m_rest.remove_prefix(1);
        return true;
    }

    char32_t literal() noexcept {
        if (m_rest.size() > 1) take(U'\\');
        const char32_t character = m_rest.front();
        m_rest.remove_prefix(1);
        return character;
    }

    // Whether the set at the front has the character; nothing, and no step, when it is not closed.
    std::optional<bool> takeSet(char32_t character) noexcept {
        Cursor set(m_rest.substr(1));
        const bool isNegated = set.take(U'!') || set.take(U'^');
        bool isIn = false;
        for (bool isFirst = true; isFirst || !set.take(U']'); isFirst = false) {
            if (set.isEnd()) return std::nullopt;
            const char32_t first = set.literal();
            const bool isRange = set.m_rest.size() > 1 && set.m_rest[0] == U'-' && set.m_rest[1] != U']';
            if (isRange) set.take(U'-');
            const char32_t last = isRange ? set.literal() : first;
            isIn = isIn || (first <= character && character <= last);
        }
        m_rest = set.m_rest;
        return isIn != isNegated;
    }

    std::u32string_view m_rest;
};

}  // namespace

Pattern::Pattern(std::string_view text) : m_text(toUtf32(toUtf16(text))) {}

bool Pattern::matches(std::u32string_view name) const noexcept {
    Cursor cursor(m_text);
    std::optional<Cursor> afterStar;
    std::size_t starAt = 0;  // how much of the name the last star leaves to what is in front of and in it
    for (std::size_t i = 0; i < name.size() || !cursor.isEnd();) {
        if (cursor.takeStar()) {
            afterStar = cursor;
            starAt = i;
        } else if (i < name.size() && cursor.takeOne(name[i])) {
            ++i;
        } else if (afterStar && starAt < name.size()) {
            cursor = *afterStar;
            i = ++starAt;
        } else {
            return false;
        }
    }
    return true;
}

bool hasUnescapedBracket(std::string_view pattern) noexcept {
    for (std::size_t at = 0; at < pattern.size(); ++at) {
        if (pattern[at] == '[') return true;
        if (pattern[at] == '\\') ++at;
    }
    return false;
}

bool Globs::matches(const kestrel::Model& model, const SignalSource& source) const {
    if (m_patterns.empty()) return false;
    const std::size_t modelSize = toUtf32(model.name()).size();
    const auto isMatch = [&](const std::u16string& name) {
        const std::u32string full = toUtf32(name);
        const std::u32string_view fromSlash = std::u32string_view(full).substr(modelSize);
        return std::any_of(m_patterns.begin(), m_patterns.end(), [&](const Pattern& pattern) {
            return pattern.matches(full) || pattern.matches(fromSlash) || pattern.matches(fromSlash.substr(1));
        });
    };
    const std::u16string block = model.fullPath(*source.block);
    if (source.item) return isMatch(source.item->subPath.empty() ? block : block + u"/" + source.item->subPath);
    return isMatch(block) || isMatch(fullName(model, source)) || isMatch(block + u":" + portName(source));
}

}  // namespace workbench
