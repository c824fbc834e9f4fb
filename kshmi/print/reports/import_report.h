#pragma once

#include <ostream>
#include <string>

#include "workbench/import/import_model.h"

namespace kshmi {

/// Tells in JSON what was imported, to be saved as `file`, and what was left out.
void printImportJson(const workbench::ImportedModel& model, const std::string& file, std::ostream& out);

}  // namespace kshmi
