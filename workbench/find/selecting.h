#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "workbench/find/reference.h"
#include "workbench/session/signal_source.h"

namespace workbench {

/// What somebody means: references, and patterns over full paths.
struct Selection {
    std::vector<std::string> references;
    std::vector<std::string> all;     ///< patterns
    std::vector<std::string> except;  ///< patterns
    ReferenceOptions options;
};

enum class Selectable : std::uint8_t { ports, portsAndItems };

/// What a selection's patterns match.
struct Matching {
    std::vector<SignalSource> sources;  ///< in the model's order
    std::vector<std::string> idle;      ///< "except" patterns that leave nothing out
};

/// What any "all" pattern matches and no "except" pattern; with an activity in the options only the chart items that
/// can have it. Throws `Error` for an "all" pattern that matches nothing in the model.
Matching selectMatching(const kestrel::Model& model, const Selection& selection, Selectable what);

}  // namespace workbench
