#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "workbench/session/session.h"

namespace workbench {

/// What a rename has changed, and whom it has told.
struct Renamed {
    std::size_t sourceModels = 0;       ///< clients whose source model had another name
    std::size_t parameters = 0;         ///< clients whose "ModelName" parameter had
    std::vector<std::string> received;  ///< by the interface manager: "old -> new" each
};

/// A model's name from UTF-8. Throws `Error` for one that cannot be.
std::u16string requireModelName(std::string_view text);

/// Gives the open model a new name, as an editor does: the model itself, its signals with their index, its clients;
/// then the library tells the interface manager. Throws `kestrel::ModelError` for a name that cannot be.
Renamed renameModel(Session& session, const std::u16string& name);

}  // namespace workbench
