#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "workbench/find/positions.h"
#include "workbench/session/session.h"

/// What becomes of the signals on something that is removed from the model.
namespace workbench {

enum class Marks : std::uint8_t {
    keep,    ///< what is marked is not removed
    remove,  ///< the signals go with it
};

/// Whether what is below goes along.
enum class Below : std::uint8_t { refuse, remove };

/// Positions (0-based, ascending) of the signals whose sources are among those asked for. Signals whose block is gone
/// have none.
Positions marksOn(const Session& session, const std::function<bool(const SignalSource&)>& isMeant);

/// Names of signals, for messages; of many only the first.
std::string namesOf(const Session& session, const Positions& signals);

/// Removes the signals at those positions when that is asked for. Throws `Error` that names them when it is not and
/// there are any; `what` is what was to be removed.
void settleMarks(Session& session, const Positions& signals, Marks marks, const std::string& what);

/// Throws `Error` for a name that is empty or has a NUL character.
void requireName(const std::u16string& name);

}  // namespace workbench
