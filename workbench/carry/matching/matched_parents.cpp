#include "workbench/carry/matching/matched_parents.h"

#include "workbench/carry/matching/block_features.h"

namespace workbench {

// Where two paths are known to belong together, so are those above them.
void MatchedParents::note(std::u16string_view oldPath, std::u16string_view newPath) {
    while (!oldPath.empty() && !newPath.empty()) {
        const bool isKnown = enter(m_forward, oldPath, newPath);
        if (enter(m_back, newPath, oldPath) && isKnown) return;
        oldPath = parentView(oldPath);
        newPath = parentView(newPath);
    }
}

// Whether nothing has changed by it.
bool MatchedParents::enter(Paths& paths, std::u16string_view from, std::u16string_view to) {
    const auto [there, isNew] = paths.emplace(from, to);
    if (isNew || there->second == to) return !isNew;
    there->second = {};
    return false;
}

std::u16string_view MatchedParents::find(const Paths& paths, std::u16string_view path) {
    const auto found = paths.find(path);
    return found == paths.end() ? std::u16string_view() : found->second;
}

bool MatchedParents::correspond(std::u16string_view oldPath, std::u16string_view newPath) const {
    if (oldPath.empty() || newPath.empty()) return oldPath == newPath;
    if (isUnknown(oldPath, newPath)) return oldPath == newPath;
    return find(m_forward, oldPath) == newPath && find(m_back, newPath) == oldPath;
}

}  // namespace workbench
