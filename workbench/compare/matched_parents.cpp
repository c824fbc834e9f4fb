#include "workbench/compare/matched_parents.h"

#include "workbench/compare/block_features.h"

namespace workbench {

void MatchedParents::note(const std::u16string& oldPath, const std::u16string& newPath) {
    std::u16string before = oldPath;
    std::u16string after = newPath;
    while (!before.empty() && !after.empty()) {
        enter(m_forward, before, after);
        enter(m_back, after, before);
        before = parentOf(before);
        after = parentOf(after);
    }
}

void MatchedParents::enter(Paths& paths, const std::u16string& from, const std::u16string& to) {
    const auto [there, isNew] = paths.emplace(from, to);
    if (!isNew && there->second != to) there->second.clear();
}

const std::u16string* MatchedParents::find(const Paths& paths, const std::u16string& path) {
    const auto found = paths.find(path);
    return found == paths.end() || found->second.empty() ? nullptr : &found->second;
}

bool MatchedParents::correspond(const std::u16string& oldPath, const std::u16string& newPath) const {
    if (oldPath.empty() || newPath.empty()) return oldPath == newPath;
    if (isUnknown(oldPath, newPath)) return oldPath == newPath;
    const std::u16string* const forward = find(m_forward, oldPath);
    const std::u16string* const back = find(m_back, newPath);
    return forward && back && *forward == newPath && *back == oldPath;
}

}  // namespace workbench
