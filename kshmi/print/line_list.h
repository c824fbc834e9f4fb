#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "kshmi/print/output.h"

namespace kshmi {

/// Lines of a report, of which a long run is cut short.
class LineList {
public:
    explicit LineList(bool showsAll) : m_showsAll(showsAll) {}
    void add(std::string line) { m_lines.push_back(std::move(line)); }
    bool isEmpty() const noexcept { return m_lines.empty(); }
    /// Prints the first lines, or all, and how many more there are.
    void print(const Output& output) const;

private:
    bool m_showsAll;
    std::vector<std::string> m_lines;
};

}  // namespace kshmi
