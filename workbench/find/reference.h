#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "memory_host/kestrel/model.h"
#include "workbench/session/signal_source.h"

namespace workbench {

/// What the command line says besides the reference itself.
struct ReferenceOptions {
    std::string activity;               ///< empty when not given
    std::optional<std::uint32_t> ssid;  ///< of a chart item
};

/// What a reference names: "block/path:port" (port by number or name), "chart/State path" or "chart/datum" is one port
/// or item; a block's path alone is all its output ports and, for a chart, the chart itself; with an activity or an
/// SSID it is that item of the chart. The model's name may stand in front; a '/' in front says that it does not. The
/// longest block path that fits is taken, since names may contain ":". Never empty. Throws `Error` that names the
/// reference and what there is instead, also when it can be read in two ways.
std::vector<SignalSource> resolveReference(const kestrel::Model& model, std::string_view reference,
                                           const ReferenceOptions& options);

/// The path below the model that a text means: without the model's name in front, should it be there, or the '/' that
/// says that it is not.
std::u16string withoutModel(const kestrel::Model& model, std::string_view path);
/// The block at that path. Throws `Error` when there is none, and for a path that is two blocks.
const kestrel::Block& resolveBlock(const kestrel::Model& model, std::string_view path);
/// The same for a path that has a block or only blocks below it: the path below the model.
std::u16string resolveParent(const kestrel::Model& model, std::string_view path);

/// The activity to use for a chart item. Throws `Error` for one that it cannot have.
std::u16string activityFor(const ChartItem& item, const ReferenceOptions& options);

}  // namespace workbench
