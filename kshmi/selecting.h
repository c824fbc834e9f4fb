#pragma once

#include <vector>

#include "kshmi/commands.h"
#include "kshmi/signal_source.h"

/// What "--all" and "--except" select.
namespace kshmi {

enum class Selectable : std::uint8_t { ports, portsAndItems };

/// Throws `Error` for options that have nothing to apply to.
void requireApplicable(const Selection& selection);
/// The same, also when nothing is selected.
void requireSelection(const Selection& selection, bool isOtherwiseSelected);

/// What any "--all" pattern matches and no "--except" pattern, in the model's order; with an activity in the options
/// only the chart items that can have it. Throws `Error` for an "--all" pattern that matches nothing in the model,
/// and warns of an "--except" pattern that leaves nothing out.
std::vector<SignalSource> selectMatching(const kestrel::Model& model, const Selection& selection, Selectable what,
                                         const Output& output);

}  // namespace kshmi
