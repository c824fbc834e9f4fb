#include "workbench/change/mark_target.h"

#include <utility>

#include "workbench/change/all_or_none.h"

namespace workbench {

std::vector<MarkTarget> markTargets(const Session& session, std::vector<SignalSource> sources,
                                    const ReferenceOptions& options, bool isAgain) {
    std::vector<MarkTarget> targets;
    targets.reserve(sources.size());
    for (SignalSource& source : sources) {
        OptionalBox<std::u16string> activity;
        if (source.item) activity = activityFor(*source.item, options);
        const bool isThere = !isAgain && isMarked(session, source, activity ? *activity : std::u16string());
        targets.push_back({std::move(source), std::move(activity), isThere});
    }
    return targets;
}

void addSignals(Session& session, const std::vector<MarkTarget>& targets, const SignalSettings& settings) {
    const std::size_t before = session.signals().getCount();
    allOrNone(
        [&] {
            for (const MarkTarget& target : targets)
                if (!target.isMarked)
                    addSignal(session, target.source, target.activity ? *target.activity : std::u16string(), settings);
        },
        [&] { removeSignals(session, positionsBetween(before, session.signals().getCount())); });
}

}  // namespace workbench
