#pragma once

#include <optional>
#include <string>

#include "workbench/find/positions.h"
#include "workbench/session/session.h"
#include "workbench/session/signal_source.h"

/// Marking and unmarking, as an editor does it: the record is made natively, the set is changed through
/// its host class.
namespace workbench {

/// What is said of a new signal. Texts are UTF-8.
struct SignalSettings {
    std::optional<std::string> name;  ///< the port's or chart item's own name when not given
    int decimation = 1;
    int maxPoints = 0;
    bool isFrameBased = false;
    bool isHidden = false;
    bool isExcludedFromSave = false;
    bool isBuffered = false;
    std::string visualType;
};

/// Adds a signal at the end of the set; `activity` is for chart items. Throws `Error` when the host makes
/// no object for it.
void addSignal(Session& session, const SignalSource& source, const std::u16string& activity,
               const SignalSettings& settings);

/// Whether the source is marked already.
bool isMarked(const Session& session, const SignalSource& source, const std::u16string& activity);

/// Removes the signals at the positions (0-based, in any order, duplicates allowed). A port that is
/// marked again later gets the UUID back that its first signal had.
void removeSignals(Session& session, Positions positions);

}  // namespace workbench
