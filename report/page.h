#pragma once

#include <functional>
#include <string>

#include "workbench/check/check_file.h"
#include "workbench/model_file/model_file.h"
#include "workbench/record/recorded_run.h"
#include "workbench/session/session.h"

/// A model file as one HTML page that needs nothing besides: what is marked, who watches it, what `check`
/// found, and what a run has recorded.
namespace report {

/// What a page is about. All of it outlives the writing.
struct Contents {
    const workbench::Session& session;
    /// Of the same file; what was read of it may have gone into the session.
    const workbench::CheckedFile& checked;
    /// What settles a finding, in the front end's own words; empty for nothing.
    std::function<std::string(const workbench::Finding&)> remedy;
    /// With its columns identified, as far as they can be; null for a page without a run.
    const workbench::RecordedRun* run = nullptr;
};

/// Writes the page. The same contents give the same bytes: nothing is taken from a clock or the surroundings.
void writePage(const Contents& contents, const workbench::TextSink& sink);

}  // namespace report
