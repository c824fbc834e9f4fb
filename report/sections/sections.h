#pragma once

#include "report/html.h"
#include "report/page.h"
#include "report/page_index.h"

/// The parts of a page, in their order. One that has nothing to say is left out, or says so.
namespace report {

void writeSummary(Html& html, const Contents& contents, const PageIndex& index);
void writeFindings(Html& html, const Contents& contents, const PageIndex& index);
void writeRun(Html& html, const Contents& contents, const PageIndex& index);
void writeSignals(Html& html, const Contents& contents, const PageIndex& index);
/// What was recorded and is no signal of the model.
void writeOthers(Html& html, const PageIndex& index);
/// Clients whose signal is not in the model.
void writeStrays(Html& html, const Contents& contents, const PageIndex& index);
void writeParked(Html& html, const Contents& contents);
void writeBlocks(Html& html, const Contents& contents, const PageIndex& index);

/// What a section is called, and how much it holds.
void openSection(Html& html, std::string_view id, std::string_view title, std::size_t count);
void closeSection(Html& html);

}  // namespace report
