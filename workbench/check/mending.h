#pragma once

#include <bitset>
#include <string>
#include <vector>

#include "workbench/check/finding.h"
#include "workbench/session/session.h"

/// What settles findings. The session holds the very contents that were checked, opened anyhow; it is left unsaved.
namespace workbench {

using FindingKinds = std::bitset<kFindingKinds>;
constexpr bool has(const FindingKinds& kinds, FindingKind kind) { return kinds[static_cast<std::size_t>(kind)]; }

/// What was done about a finding.
struct Settled {
    FindingKind kind = FindingKind::file;
    std::string what;  ///< "m/A:1 to m/A:2, which is \"y\" now"
};

/// Mends, of the findings of these kinds, those that can be mended without a choice: marks follow their names, records
/// get UUIDs and identifiers of their own, chart signals the parameters that they can only have.
std::vector<Settled> mend(Session& session, const std::vector<Finding>& findings, const FindingKinds& kinds);

}  // namespace workbench
