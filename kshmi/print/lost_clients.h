#pragma once

#include <ostream>

#include "workbench/find/watching.h"

namespace kshmi {

/// One warning that names the clients that lost their signals, and the remedy; nothing when there are none. In a dry
/// run it names those that would.
void warnOfLost(const workbench::Session& session, const workbench::DanglingWatch& watch, bool isDryRun,
                std::ostream& err);

}  // namespace kshmi
