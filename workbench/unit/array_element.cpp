#include "workbench/unit/array_element.h"

#include <charconv>
#include <limits>

namespace workbench {

std::string elementText(std::size_t position, const std::vector<std::uint64_t>& extents) {
    std::string text = "]";
    for (std::size_t i = extents.size(); i-- > 0;) {
        const auto extent = static_cast<std::size_t>(extents[i]);
        text.insert(0, (i > 0 ? "," : "") + std::to_string(position % extent + 1));
        position /= extent;
    }
    return "[" + text;
}

std::size_t elementAt(std::string_view text, const std::vector<std::uint64_t>& extents) noexcept {
    constexpr std::size_t kNone = std::numeric_limits<std::size_t>::max();
    if (text.size() < 2 || text.front() != '[' || text.back() != ']') return kNone;
    const char* at = text.data() + 1;
    const char* const end = text.data() + text.size() - 1;
    std::size_t position = 0;
    for (std::size_t i = 0; i < extents.size(); ++i) {
        if (i > 0 && (at == end || *at++ != ',')) return kNone;
        std::uint64_t number = 0;
        const auto [stop, code] = std::from_chars(at, end, number);
        if (code != std::errc() || number < 1 || number > extents[i]) return kNone;
        position = position * static_cast<std::size_t>(extents[i]) + static_cast<std::size_t>(number - 1);
        at = stop;
    }
    return at == end ? position : kNone;
}

std::size_t elementCount(const std::vector<std::uint64_t>& extents) noexcept {
    std::size_t count = 1;
    for (const std::uint64_t extent : extents) count *= static_cast<std::size_t>(extent);
    return count;
}

}  // namespace workbench
