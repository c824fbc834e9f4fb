#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "memory_host/kestrel/model.h"
#include "workbench/session/signal_source.h"

namespace workbench {

/// What the command line says besides the reference itself.
struct ReferenceOptions {
    std::string activity;               ///< empty when not given
    std::optional<std::uint32_t> ssid;  ///< of a chart item
};

/// Finds what a reference names. It is literal: "block/path:port" (port by number or name, 1 when left
/// out), "chart/State path", "chart/datum", or a chart's path together with an activity or an SSID; the
/// model's name may stand in front. The longest block path that fits is taken, since names may contain
/// ":". Throws `Error` that names the reference and what there is instead.
SignalSource resolveReference(const kestrel::Model& model, std::string_view reference, const ReferenceOptions& options);

/// The path below the model that a text means: without the model's name in front, should it be there.
std::u16string withoutModel(const kestrel::Model& model, std::string_view path);
/// The block at that path. Throws `Error` when there is none.
const kestrel::Block& resolveBlock(const kestrel::Model& model, std::string_view path);

/// The activity to use for a chart item. Throws `Error` for one that it cannot have.
std::u16string activityFor(const ChartItem& item, const ReferenceOptions& options);

}  // namespace workbench
