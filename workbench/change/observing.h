#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/hv_array.h"
#include "workbench/find/positions.h"
#include "workbench/find/selecting.h"
#include "workbench/session/session.h"

/// The clients of a model's signals. Positions are 0-based.
namespace workbench {

/// What can be said of a client; what is left out is the default of a new one and stays of one that is there. Texts are
/// UTF-8.
struct ClientSettings {
    std::optional<std::string> type;
    HvArrayPtr params;                        ///< null to leave them out
    std::optional<std::uint32_t> updateRate;  ///< 1
    std::optional<std::uint32_t> channel;     ///< 1
    std::optional<bool> isImaginary;
    std::optional<std::string> busLeaf;

    bool isAny() const noexcept;
};

/// Adds a client of the signal at that position to the end of the set. Its model path is the signal's block, so that
/// its source model is saved with it. Throws `Error` when the host makes no object for it.
void addClient(Session& session, std::size_t signal, const ClientSettings& settings);

/// The same for each of the signals, for all of them or, when it throws, for none. Returns the new clients' positions.
Positions addClients(Session& session, const Positions& signals, const ClientSettings& settings);

/// Which signals new clients watch: one on each port and item, the first one where several are alike; of a chart item
/// without an activity the one that is meant when none is said. `calls` are UUIDs and 1-based positions of further
/// signals. Throws `Error` for a reference without a mark, and for a chart item on which others are several.
Positions signalsToWatch(const Session& session, const Selected& selected, const ReferenceOptions& options,
                         const std::vector<std::string>& calls);

/// Gives the clients at the positions those settings; each keeps its UUID, place and signal. Returns the positions of
/// those that were otherwise before, ascending.
Positions changeClients(Session& session, Positions positions, const ClientSettings& settings);

/// Removes the clients at the positions, in any order, duplicates allowed.
void removeClients(Session& session, Positions positions);

/// Has the host drop the clients that it does not need. Returns the positions that they had.
Positions dropUnusedClients(Session& session);

/// New clients with aligned model paths, in the set's order, as the host answers for all. Throws `Error` when it does
/// not.
std::vector<ks_hmi::StreamingClients::ClientPtr> alignedClients(const Session& session);

}  // namespace workbench
