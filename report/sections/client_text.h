#pragma once

#include "report/html.h"
#include "report/page_index.h"

namespace report {

/// A client as an element of a list: its kind, its settings, its parameters, and what is special about it.
void writeClient(Html& html, const Contents& contents, const PageIndex& index, std::size_t position);

}  // namespace report
