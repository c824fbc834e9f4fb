#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "memory_host/kestrel/host_values.h"

/// Walking a set object (of signals or of observers) by its own "Count" and "get".
namespace kestrel {

/// One place in a set. The set is borrowed.
class SetElement {
public:
    SetElement(const hvArray* set, std::size_t number)
        : m_set(set), m_position(makeDouble(static_cast<double>(number))) {}

    /// 1-based, borrowed.
    const hvArray* position() const noexcept { return m_position.get(); }
    /// What the set's method of that name answers for the place.
    HvArrayPtr get(std::string_view method = "get") const { return callForOne(method, {m_set, position()}); }

private:
    const hvArray* m_set;
    HvArrayPtr m_position;
};

/// How many places the set has; 0 for null.
inline std::size_t countOf(const hvArray* set) {
    constexpr double kMost = 9007199254740992.0;  // beyond it the numbers have gaps
    const double count = set ? numberProperty(set, "Count") : 0.0;
    return count >= 1.0 ? static_cast<std::size_t>(std::min(count, kMost)) : 0;
}

/// The places of a set in order, counted once: none for null. Each is asked when it is reached, so the set may change
/// meanwhile.
inline auto elementsOf(const hvArray* set) {
    return ks_host::Elements(countOf(set), [set](std::size_t index) { return SetElement(set, index + 1); });
}
/// The same from the last to the first.
inline auto elementsFromLast(const hvArray* set) {
    const std::size_t count = countOf(set);
    return ks_host::Elements(count, [set, count](std::size_t index) { return SetElement(set, count - index); });
}

}  // namespace kestrel
