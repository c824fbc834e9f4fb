#pragma once

#include <string>
#include <vector>

#include "workbench/import/fmi_description.h"
#include "workbench/record/record_model.h"

/// What a run is asked for, made out before it begins.
namespace workbench {

/// The .fmu that a model was imported from, or the one that is named instead. Throws `Error` for a model that was
/// not imported from one.
std::string unitPathOf(const Session& session, const RecordOptions& options);

/// Start, end and step, of what is asked for and what the unit says. Throws `Error` for what cannot be.
void planTimes(const FmiDescription& description, const RecordOptions& options, UnitTask& task);

/// Start values, and sizes of arrays. Throws `Error` that names the variable.
void planValues(const FmiDescription& description, const RecordOptions& options, UnitTask& task,
                std::vector<GivenSize>& sizes);

}  // namespace workbench
