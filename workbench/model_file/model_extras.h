#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/hv_array.h"
#include "workbench/model_file/origin.h"

namespace workbench {

/// What a parked mark lost.
enum class LostWith : std::uint8_t { block, port, item };

/// "block", "port" or "item"; and the other way round, nothing for any other text.
constexpr const char* textOf(LostWith lost) noexcept {
    return lost == LostWith::block ? "block" : lost == LostWith::port ? "port" : "item";
}
constexpr std::optional<LostWith> lostWithOf(std::string_view text) noexcept {
    for (const LostWith lost : {LostWith::block, LostWith::port, LostWith::item})
        if (text == textOf(lost)) return lost;
    return std::nullopt;
}

/// A signal whose source the model does not have any more, kept until a later version has it again.
struct ParkedMark {
    HvArrayPtr signal;  ///< 1 x 1 struct array with the saved fields
    std::optional<std::u16string> markedName = std::nullopt;
    HvArrayPtr clients;  ///< N x 1, those that watched it
    LostWith lost = LostWith::block;
    std::u16string from = {};  ///< the model that had the source
    bool isUnsure = false;     ///< the source may be there, and nobody has said where
};

/// What a model file keeps beside the model and what the library saves.
struct ModelExtras {
    /// What each signal's source was called when it was marked or last confirmed, in the signals' order: a port's or a
    /// datum's name, a state's path, empty for a chart. Nothing for a signal that was never confirmed; the last ones
    /// may be left out.
    std::vector<std::optional<std::u16string>> markedNames = {};
    std::vector<ParkedMark> parked = {};
    /// Nothing for a model that was not imported.
    std::optional<Origin> origin = std::nullopt;

    /// Of the signal at `position` (0-based), null when it has none.
    const std::u16string* markedName(std::size_t position) const noexcept {
        return position < markedNames.size() && markedNames[position] ? &*markedNames[position] : nullptr;
    }
};

}  // namespace workbench
