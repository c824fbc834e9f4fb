#pragma once

#include <algorithm>
#include <cstdint>
#include <ranges>

#include "memory_host/kestrel/host_values.h"

/// Walking a set object (of signals or of observers) by its own "Count" and "get".
namespace kestrel {

/// One place in a set. The set is borrowed.
class SetElement {
public:
    SetElement(const hvArray* set, std::uint64_t number)
        : m_set(set), m_position(makeDouble(static_cast<double>(number))) {}

    /// 1-based, borrowed.
    const hvArray* position() const noexcept { return m_position.get(); }
    /// What the set's method of that name answers for the place.
    HvArrayPtr get(std::string_view method = "get") const { return callForOne(method, {m_set, position()}); }

private:
    const hvArray* m_set;
    HvArrayPtr m_position;
};

/// The places of a set in order, counted once: none for null. Each is asked when it is reached, so the set may change
/// meanwhile.
inline auto elementsOf(const hvArray* set) {
    constexpr double kMost = 9007199254740992.0;  // beyond it the numbers have gaps
    const double count = set ? numberProperty(set, "Count") : 0.0;
    const std::uint64_t last = count >= 1.0 ? static_cast<std::uint64_t>(std::min(count, kMost)) : 0;
    return std::views::iota(std::uint64_t{1}, last + 1) |
           std::views::transform([set](std::uint64_t number) { return SetElement(set, number); });
}

}  // namespace kestrel
