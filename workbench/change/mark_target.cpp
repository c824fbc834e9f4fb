#include "workbench/change/mark_target.h"

#include <utility>

#include "workbench/change/marking.h"

namespace workbench {

std::vector<MarkTarget> markTargets(const Session& session, std::vector<SignalSource> sources,
                                    const ReferenceOptions& options, bool isAgain) {
    std::vector<MarkTarget> targets;
    targets.reserve(sources.size());
    for (SignalSource& source : sources) {
        std::u16string activity = source.item ? activityFor(*source.item, options) : std::u16string();
        const bool isThere = !isAgain && isMarked(session, source, activity);
        targets.push_back({std::move(source), std::move(activity), isThere});
    }
    return targets;
}

}  // namespace workbench
