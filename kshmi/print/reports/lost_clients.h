#pragma once

#include <ostream>
#include <string>

#include "workbench/find/watching.h"

namespace kshmi {

/// One warning that names the clients that lost their signals, and the remedy; nothing when there are none. In a dry
/// run it names those that would.
void warnOfLost(const workbench::Session& session, const workbench::DanglingWatch& watch, bool isDryRun,
                std::ostream& err);

/// A warning when the client is of a kind that is no longer supported, as a validation would drop it.
void warnOfDeprecated(const ks_hmi::SignalClient& client, const std::string& file, std::ostream& err);

}  // namespace kshmi
