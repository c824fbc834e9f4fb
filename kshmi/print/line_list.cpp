#include "kshmi/print/line_list.h"

#include <fmt/format.h>

#include <algorithm>

namespace kshmi {

namespace {

constexpr std::size_t kMostLines = 50;

}  // namespace

void LineList::print(const Output& output) const {
    const std::size_t count = m_showsAll ? m_lines.size() : std::min(kMostLines, m_lines.size());
    for (std::size_t i = 0; i < count; ++i) output.out << m_lines[i] << '\n';
    if (const std::size_t rest = m_lines.size() - count; rest > 0)
        output.out << fmt::format("  ... and {} more; --all-lines shows everything\n", rest);
}

}  // namespace kshmi
