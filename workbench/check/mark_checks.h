#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "workbench/check/check_file.h"
#include "workbench/check/record_checks.h"
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

/// Adds findings about the signals of a file. What is given must outlive it, but for the list.
std::unique_ptr<SliceChecks> markChecks(CheckedFile& checked, const kestrel::Model& model, const CheckedList& list);
/// "the mark on "speed" of "Sensors/Speed"".
std::string nameOfParked(const ParkedMark& mark);
/// Adds findings about parked marks.
void checkParked(CheckedFile& checked, const std::vector<ParkedMark>& parked);

}  // namespace workbench
