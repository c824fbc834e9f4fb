#pragma once

#include <optional>
#include <string>

#include "workbench/check/check_file.h"
#include "workbench/session/signal_source.h"

namespace workbench {

/// What a chart signal's parameters can only mean.
struct ChartParameters {
    ChartItem item;
    std::u16string activity;
};

/// Of a chart signal whose "SSID" or "Activity" is missing or wrong: the item with its SSID, else the only one with its
/// sub-path; the activity is the signal's, of a datum the one that there is. Nothing when there is a choice.
std::optional<ChartParameters> chartParameters(const kestrel::Model& model, const ks_hmi::SignalSpecification& signal);

/// Adds findings about the signals of the contents.
void checkMarks(CheckedFile& checked);
/// The same about parked marks.
void checkParked(CheckedFile& checked);

}  // namespace workbench
