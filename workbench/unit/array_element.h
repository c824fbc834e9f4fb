#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// What the elements of an array are called: "[2]", "[1,3]"; counted from 1, the last number runs fastest.
namespace workbench {

/// The text for the element at a position (0-based).
std::string elementText(std::size_t position, const std::vector<std::uint64_t>& extents);
/// The other way round; a position behind the last one for what names no element.
std::size_t elementAt(std::string_view text, const std::vector<std::uint64_t>& extents) noexcept;
/// How many there are; 1 of a scalar, which has no extents.
std::size_t elementCount(const std::vector<std::uint64_t>& extents) noexcept;

}  // namespace workbench
