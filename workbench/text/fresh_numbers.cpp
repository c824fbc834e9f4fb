#include "workbench/text/fresh_numbers.h"

#include <algorithm>
#include <charconv>
#include <system_error>

namespace workbench {

void FreshNumbers::note(std::string_view text) {
    std::uint64_t number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, code] = std::from_chars(text.data(), end, number);
    if (code == std::errc() && stop == end) note(number);
}

std::uint64_t FreshNumbers::next() {
    if (m_sorted < m_taken.size()) std::ranges::sort(m_taken);
    std::uint64_t fresh = m_taken.back();
    if (fresh < m_most)
        ++fresh;
    else
        for (fresh = m_most; std::ranges::binary_search(m_taken, fresh);) --fresh;
    m_taken.insert(std::ranges::upper_bound(m_taken, fresh), fresh);
    m_sorted = m_taken.size();
    return fresh;
}

}  // namespace workbench
