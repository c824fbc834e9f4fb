#pragma once

#include <string>
#include <unordered_map>

/// Which parents of blocks have become which, told by the blocks below them that were found.
namespace workbench {

class MatchedParents {
public:
    /// A block was found: what it was and is below counts for its parents, level by level from below.
    void note(const std::u16string& oldPath, const std::u16string& newPath);

    /// What the old path is now, when all that was found below it is below one path; null when that is not known.
    const std::u16string* of(const std::u16string& oldPath) const { return find(m_forward, oldPath); }
    /// Whether nothing was found below either.
    bool isUnknown(const std::u16string& oldPath, const std::u16string& newPath) const {
        return !m_forward.contains(oldPath) && !m_back.contains(newPath);
    }
    /// Whether all that was found below the one is below the other, and the other way round. True of a path that stays
    /// when nothing below it was found.
    bool correspond(const std::u16string& oldPath, const std::u16string& newPath) const;

private:
    /// To the one path, or an empty one where there are several. The root is never entered.
    using Paths = std::unordered_map<std::u16string, std::u16string>;
    static void enter(Paths& paths, const std::u16string& from, const std::u16string& to);
    static const std::u16string* find(const Paths& paths, const std::u16string& path);

    Paths m_forward, m_back;
};

}  // namespace workbench
