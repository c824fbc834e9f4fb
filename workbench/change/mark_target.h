#pragma once

#include <string>
#include <vector>

#include "workbench/change/marking.h"
#include "workbench/find/reference.h"
#include "workbench/session/session.h"
#include "workbench/session/signal_source.h"

namespace workbench {

/// A port or chart item that is to be marked.
struct MarkTarget {
    SignalSource source;
    OptionalBox<std::u16string> activity;  ///< of a chart item
    bool isMarked = false;                 ///< already, and not to be marked again
};

/// The sources in their order, chart items with the activity that the options name. With `isAgain` none counts as
/// marked. Throws `Error` for an activity that an item does not have.
std::vector<MarkTarget> markTargets(const Session& session, std::vector<SignalSource> sources,
                                    const ReferenceOptions& options, bool isAgain);

/// Adds a signal for each that is not marked, in their order, at the end of the set: for all of them, or, when it
/// throws, for none. Throws as `addSignal`.
void addSignals(Session& session, const std::vector<MarkTarget>& targets, const SignalSettings& settings);

}  // namespace workbench
