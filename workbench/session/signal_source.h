#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "memory_host/kestrel/model.h"
#include "workbench/session/optional_box.h"

namespace ks_hmi {
class SignalSpecification;
}

namespace workbench {

/// The domains of signals that come from charts; a port's is empty.
inline constexpr std::u16string_view kChartDomain = u"cw_chart";
inline constexpr std::u16string_view kStateDomain = u"cw_state";
inline constexpr std::u16string_view kDataDomain = u"cw_data";

/// A chart, or a state or datum in it.
struct ChartItem {
    std::u16string domainType;  ///< one of the three
    std::u16string subPath;     ///< state path or datum name; empty for the chart itself
    std::uint32_t ssid = 0;
};

/// What a signal can come from: an output port of a block, or a chart item.
struct SignalSource {
    const kestrel::Block* block = nullptr;
    int port = 0;  ///< 1-based; 0 for a chart item
    OptionalBox<ChartItem> item;
};

/// "model/block/path:2" or "model/chart/State".
std::u16string fullName(const kestrel::Model& model, const SignalSource& source);
/// The path in front of the last '/'; empty when there is none.
std::u16string parentPath(const std::u16string& path);
/// Whether a path is `parent` or lies below it.
bool isAtOrBelow(std::u16string_view path, std::u16string_view parent);
/// The parent of the new path for a signal whose block moves, when its subsystem path is the parent of the old one;
/// nothing when it is another and stays.
std::optional<std::u16string> followedSubSysPath(const std::u16string& subSysPath, const std::u16string& oldPath,
                                                 const std::u16string& newPath);
/// The port's name in the model, empty for a chart item and a port that the block does not have.
std::u16string portName(const SignalSource& source);

/// What lists say of a signal in one word each.
struct SignalFlags {
    bool isFrameBased = false;
    bool isHidden = false;
    bool isBuffered = false;
    bool isExcludedFromSave = false;
};
/// "frame-based,hidden"; empty when there is none.
std::string textOf(const SignalFlags& flags);

/// The item of that identifier in a chart block, the chart itself for 0; nothing when there is none.
std::optional<ChartItem> chartItemOf(const kestrel::Block& block, std::uint32_t ssid);
ChartItem itemOf(const kestrel::ChartState& state);
/// The chart itself, its states and its data; empty for a block that is no chart.
std::vector<ChartItem> chartItemsOf(const kestrel::Block& block);

bool isChartSignal(const ks_hmi::SignalSpecification& signal);
/// The block that the signal is on, by element identifier, by path only when it has none; null when it is gone.
const kestrel::Block* blockOf(const kestrel::Model& model, const ks_hmi::SignalSpecification& signal);
/// Where a signal comes from in the open model; the block is null when it is gone.
SignalSource sourceOf(const kestrel::Model& model, const ks_hmi::SignalSpecification& signal);
/// The text of an "SSID" parameter as a number, nothing when it is none.
std::optional<std::uint32_t> ssidOf(std::u16string_view text);
/// The same for the signal's parameter.
std::optional<std::uint32_t> ssidOf(const ks_hmi::SignalSpecification& signal);

/// The activity that a chart signal observes; empty for a port's.
std::u16string activityOf(const ks_hmi::SignalSpecification& signal);

inline constexpr const char16_t* kActivities[] = {u"Self", u"Child", u"Leaf", u"Data"};
/// Whether the activity is one that such an item can have: data have "Data", charts and states the others.
bool hasActivity(const ChartItem& item, std::u16string_view activity);
/// The activities of such an item, for messages: "Self, Child, Leaf".
std::string activityList(const ChartItem& item);
/// What is observed of an item when nothing is said: "Data" for data, else "Self".
std::u16string defaultActivity(const ChartItem& item);

}  // namespace workbench
