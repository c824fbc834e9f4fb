#pragma once

#include <string>

#include "workbench/import/fmi_description.h"
#include "workbench/unit/unit.h"

namespace workbench {

/// Reads the description of an .fmu. Throws `Error` for what cannot be run here, with the reason: no archive of a unit,
/// FMI 1.0, no co-simulation, no binary for this machine.
FmiDescription readUnitFile(const std::string& path);

/// Unpacks the unit below an existing folder and says where its binary is, and all else that it is made with.
UnitStart unpackUnit(const std::string& path, const FmiDescription& description, const std::string& folder);

}  // namespace workbench
