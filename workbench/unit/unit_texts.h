#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

#include "workbench/text/text.h"
#include "workbench/unit/unit_library.h"

/// Texts that a unit gave, in one buffer.
namespace workbench {

inline constexpr unsigned kTextSizeBits = 32;

/// Appends a text and returns where it is: its position and its size in 32 bits each.
inline std::uint64_t addText(std::string& texts, std::string_view text) {
    if (texts.size() + text.size() > std::numeric_limits<std::uint32_t>::max())
        throw UnitFailure("the unit's texts have more than 4 GiB at one time");
    const std::uint64_t slot = (std::uint64_t{texts.size()} << kTextSizeBits) | text.size();
    texts += text;
    return slot;
}

/// The text at a slot; nothing of what lies outside.
inline std::string_view textAt(std::string_view texts, std::uint64_t slot) {
    const auto at = static_cast<std::size_t>(slot >> kTextSizeBits);
    const auto size = static_cast<std::size_t>(slot & std::numeric_limits<std::uint32_t>::max());
    return at <= texts.size() && size <= texts.size() - at ? texts.substr(at, size) : std::string_view();
}

/// The same as UTF-8: bytes that are none become U+FFFD. `room` holds what is not as it was.
inline std::string_view utf8At(std::string_view texts, std::uint64_t slot, std::string& room) {
    const std::string_view text = textAt(texts, slot);
    if (std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; })) return text;
    return room = toUtf8(toUtf16(text));
}

}  // namespace workbench
