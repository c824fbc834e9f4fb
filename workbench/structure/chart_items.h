#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "workbench/find/reference.h"
#include "workbench/session/session.h"
#include "workbench/structure/marks.h"

/// Editing what a chart consists of.
namespace workbench {

/// The state or datum that a reference names. Throws `Error` for anything else.
SignalSource itemCalled(const kestrel::Model& model, const std::string& reference, const ReferenceOptions& options);

enum class ItemKind : std::uint8_t { state, datum };

/// Adds a state (by its path below the chart) or datum; the block becomes a chart if it is not one. Without an SSID it
/// gets one that no item and no signal of the chart has. Returns the SSID. Throws `Error` for a name or SSID that
/// cannot be.
std::uint32_t addItem(Session& session, const kestrel::Block& block, ItemKind kind, const std::u16string& name,
                      std::optional<std::uint32_t> ssid = std::nullopt);

struct RemovedItems {
    std::vector<std::u16string> items;
    std::size_t signals = 0;
};

/// Removes a state or datum; of a state all below it when that is asked for. Throws `Error`, with nothing changed, for
/// the chart itself, and for states below and signals that are not to go.
RemovedItems removeItem(Session& session, const kestrel::Block& block, const ChartItem& item, Below below, Marks marks);

struct RenamedItems {
    std::vector<std::pair<std::u16string, std::u16string>> items;  ///< old and new path or name
    std::size_t signals = 0;                                       ///< how many followed
};

/// Gives a state or datum a new name; a state stays below its parent, and what is below it follows, as signals do.
/// Throws `Error` for a name that cannot be.
RenamedItems renameItem(Session& session, const kestrel::Block& block, const ChartItem& item,
                        const std::u16string& name);

}  // namespace workbench
