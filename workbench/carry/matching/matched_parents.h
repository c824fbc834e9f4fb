#pragma once

#include <boost/unordered/unordered_flat_map.hpp>
#include <string_view>

/// Which parents of blocks have become which, told by the blocks below them that were found.
namespace workbench {

/// The paths that it is told of are the models' and must stay where they are.
class MatchedParents {
public:
    /// A block was found: what it was and is below counts for its parents, level by level from below.
    void note(std::u16string_view oldPath, std::u16string_view newPath);

    /// What the old path is now, when all that was found below it is below one path; empty when that is not known.
    std::u16string_view of(std::u16string_view oldPath) const { return find(m_forward, oldPath); }
    /// Whether nothing was found below either.
    bool isUnknown(std::u16string_view oldPath, std::u16string_view newPath) const {
        return !m_forward.contains(oldPath) && !m_back.contains(newPath);
    }
    /// Whether all that was found below the one is below the other, and the other way round. True of a path that stays
    /// when nothing below it was found.
    bool correspond(std::u16string_view oldPath, std::u16string_view newPath) const;

private:
    /// To the one path, or an empty one where there are several. The root is never entered.
    using Paths = boost::unordered_flat_map<std::u16string_view, std::u16string_view, std::hash<std::u16string_view>>;
    static bool enter(Paths& paths, std::u16string_view from, std::u16string_view to);
    static std::u16string_view find(const Paths& paths, std::u16string_view path);

    Paths m_forward, m_back;
};

}  // namespace workbench
