#pragma once

#include <vector>

#include "workbench/check/mending.h"

namespace workbench {

/// Removes what findings of these kinds are about: signals, clients, parameters, parked marks. Clients of a duplicate
/// mark go to the one that stays; with the kind `dangling`, so do clients that lose their signal now.
std::vector<Settled> prune(Session& session, const std::vector<Finding>& findings, const FindingKinds& kinds);

}  // namespace workbench
