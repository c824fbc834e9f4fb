#pragma once

#include <vector>

#include "kshmi/print/output.h"
#include "workbench/find/selecting.h"

/// What "REF", "--all" and "--except" select.
namespace kshmi {

/// Throws `workbench::Error` for options that have nothing to apply to.
void requireApplicable(const workbench::Selection& selection);
/// The same, also when nothing is selected.
void requireSelection(const workbench::Selection& selection, bool isOtherwiseSelected);

/// As `workbench::selectMatching`; warns of an "--except" pattern that leaves nothing out.
std::vector<workbench::SignalSource> matchingSources(const kestrel::Model& model, const workbench::Selection& selection,
                                                     workbench::Selectable what, const Output& output);

}  // namespace kshmi
