#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "workbench/find/positions.h"
#include "workbench/find/selecting.h"
#include "workbench/find/watching.h"
#include "workbench/session/session.h"

namespace workbench {

/// Which clients somebody means: those of signals, those that are called, and those in a state, all together; of these
/// only the ones of a type. With types alone, all of those types.
struct ClientSelection {
    std::vector<std::string> calls;  ///< UUIDs and 1-based positions
    std::vector<std::string> types;  ///< all types when empty
    std::vector<ClientState> states;
    bool isDeprecated = false;  ///< those of kinds that are no longer supported

    bool isAnything() const noexcept { return !calls.empty() || !states.empty() || isDeprecated; }
    /// Adds the state for the word, one of `kClientStates`; false for another word.
    bool addState(std::string_view word);
};
inline constexpr std::array<std::string_view, 5> kClientStates{"watching", "dangling", "elsewhere", "foreign",
                                                               "deprecated"};

/// Positions of the clients, ascending. `selected` are the signals' ports and items, of which references must name one
/// with a client. Throws `Error` for what names no client.
/// Null: none was asked for, which is another thing than having found none.
Positions selectClients(const Session& session, const Selected* selected, const ReferenceOptions& options,
                        const ClientSelection& selection);

}  // namespace workbench
