#pragma once

#include <string>

#include "workbench/find/reference.h"
#include "workbench/session/session.h"

namespace workbench {

/// Whether a port or chart item is observed.
struct Answer {
    SignalSource source;
    std::u16string activity;  ///< that was asked for; empty for a port and for any activity
    bool isObserved = false;
};

/// Asks about the chart item's activity that the options say, else about any. Records nothing in the set. Throws
/// `Error` for an activity that the item does not have.
Answer ask(const Session& session, const SignalSource& source, const ReferenceOptions& options = {});

}  // namespace workbench
