#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "workbench/find/watching.h"

/// What clients are called in lists and messages. Positions are 0-based.
namespace workbench {

/// "m/A:1" or "m/Logic/On (Self)"; the path that is saved when the block is gone.
std::string nameOfSignal(const Session& session, std::size_t position);
/// "signal 1, "speed" on m/A:1", "... on A (gone)".
std::string describeSignal(const Session& session, std::size_t position);
/// "client 3 (ks_scope_observer)".
std::string nameOfClient(const Session& session, std::size_t position);
/// The same with what it watches: "client 3 (ks_scope_observer) on m/A:1", "... on m/Logic/On (Self)".
std::string describeClient(const Session& session, std::size_t position, const SignalUuids& uuids);
/// "dangling", "foreign", "deprecated" and what else is special about a client, with commas between; empty for an
/// everyday one.
std::string notesOn(const ks_hmi::SignalClient& client, const SignalUuids& uuids, std::u16string_view modelName);

}  // namespace workbench
