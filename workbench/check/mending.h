#pragma once

#include <bitset>
#include <string>
#include <string_view>
#include <vector>

#include "workbench/check/finding.h"
#include "workbench/session/session.h"

/// What settles findings. The session holds the very contents that were checked, opened anyhow; it is left unsaved.
namespace workbench {

using FindingKinds = std::bitset<kFindingKinds>;
/// The kinds that the words name, "all" for those that are allowed; `option` is what the user calls the list, for
/// messages. Throws `Error` for other words.
FindingKinds findingKindsCalled(const std::vector<std::string>& words, bool (*isAllowed)(FindingKind),
                                std::string_view option);
/// The same of what can be removed; without words what is removed when no kind is named.
FindingKinds prunedKinds(const std::vector<std::string>& words, std::string_view option);
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
