#pragma once

#include <array>
#include <cstddef>
#include <limits>
#include <span>
#include <string>

#include "memory_host/orvex/values/shared_array.h"

namespace orvex {

/// Leaves room for the multiplication by an element's size.
inline constexpr std::size_t kMostElements = std::size_t{std::numeric_limits<std::ptrdiff_t>::max()} / 16;

/// The lengths of a value, at least two; trailing lengths of 1 beyond the second are dropped.
class Dimensions {
public:
    Dimensions(std::size_t rows, std::size_t columns) noexcept : m_two{rows, columns} {}
    /// A single length N means N x 1. Throws for an empty list and for more elements than memory can hold.
    explicit Dimensions(std::span<const std::size_t> lengths);

    std::size_t count() const noexcept { return m_more ? m_more->size() : m_two.size(); }
    const std::size_t* data() const noexcept { return m_more ? m_more->data() : m_two.data(); }
    std::span<const std::size_t> lengths() const noexcept { return {data(), count()}; }
    std::size_t elements() const noexcept { return m_more ? product() : m_two[0] * m_two[1]; }
    /// "2x3x4"
    std::string text() const;

private:
    std::size_t product() const noexcept;

    std::array<std::size_t, 2> m_two{};
    SharedArray<std::size_t>::Ptr m_more;  ///< all of them, when there are more than two
};

}  // namespace orvex
