#include "kshmi/print/line_list.h"

#include <fmt/format.h>

namespace kshmi {

void LineList::print(const Output& output) const {
    for (const std::string& line : m_lines) output.out << line << '\n';
    if (const std::size_t rest = m_count - m_lines.size(); rest > 0)
        output.out << fmt::format("  ... and {} more; --all-lines shows everything\n", rest);
}

}  // namespace kshmi
