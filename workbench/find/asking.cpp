#include "workbench/find/asking.h"

namespace workbench {

Answer ask(const Session& session, const SignalSource& source, const ReferenceOptions& options) {
    Answer answer{source, {}, false};
    if (!source.item) {
        answer.isObserved = session.isObserved(*source.block, source.port);
    } else if (options.activity.empty()) {
        answer.isObserved = session.isAnyObserved(*source.block, *source.item);
    } else {
        answer.activity = activityFor(*source.item, options);
        answer.isObserved = session.isObserved(*source.block, *source.item, answer.activity);
    }
    return answer;
}

}  // namespace workbench
