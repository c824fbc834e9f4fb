#pragma once

#include <optional>
#include <string>

#include "workbench/find/positions.h"
#include "workbench/session/session.h"
#include "workbench/session/signal_source.h"

/// Marking, changing and unmarking, as an editor does it: the record is made natively, the set is changed through
/// its host class.
namespace workbench {

/// What can be said of a signal; what is left out is the default of a new one and stays of one that is there. Texts are
/// UTF-8.
struct SignalSettings {
    std::optional<std::string> name;  ///< by default the port's or chart item's own name
    std::optional<int> decimation;    ///< 1
    std::optional<int> maxPoints;     ///< 0
    std::optional<bool> isFrameBased;
    std::optional<bool> isHidden;
    std::optional<bool> isExcludedFromSave;
    std::optional<bool> isBuffered;
    std::optional<std::string> visualType;

    bool isAny() const noexcept;
};

/// Adds a signal at the end of the set; `activity` is for chart items. Throws `Error` when the host makes
/// no object for it.
void addSignal(Session& session, const SignalSource& source, const std::u16string& activity,
               const SignalSettings& settings);

/// Gives the signals at the positions (0-based) those settings; each keeps its UUID, place and clients. Returns the
/// positions of those that were otherwise before, ascending.
Positions changeSignals(Session& session, Positions positions, const SignalSettings& settings);

/// Whether the source is marked already.
bool isMarked(const Session& session, const SignalSource& source, const std::u16string& activity);

/// Removes the signals at the positions (0-based, in any order, duplicates allowed). A port that is
/// marked again later gets the UUID back that its first signal had.
void removeSignals(Session& session, Positions positions);

}  // namespace workbench
