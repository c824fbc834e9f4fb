#pragma once

#include <string>
#include <vector>

#include "workbench/session/session.h"

namespace workbench {

/// Gives the open model a new name, as an editor does: the model itself, its signals with their index, its clients;
/// then the library tells the interface manager. Returns what the manager received, "old -> new" each. Throws
/// `kestrel::ModelError` for a name that cannot be.
std::vector<std::string> renameModel(Session& session, const std::u16string& name);

}  // namespace workbench
