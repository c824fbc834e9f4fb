#pragma once

#include <cstddef>
#include <ostream>
#include <string>

#include "workbench/check/check_file.h"
#include "workbench/record/recorded_run.h"
#include "workbench/session/session.h"

namespace kshmi {

/// What settles a finding, for a page that may be read where the file has another folder.
std::string remedyOnPage(const workbench::Finding& finding);

/// Tells in JSON of the page of a model, written to `file`; `run` may be null.
void printPageJson(const workbench::Session& session, const workbench::CheckedFile& checked,
                   const workbench::RecordedRun* run, const std::string& file, std::size_t bytes, std::ostream& out);

}  // namespace kshmi
