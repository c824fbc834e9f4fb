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
    void add(std::string line) {
        addMade([&] { return std::move(line); });
    }
    /// What `make()` gives, which is asked for lines that are shown only.
    template <class Make>
    void addMade(Make make) {
        if (m_showsAll || m_lines.size() < kMost) m_lines.push_back(make());
        ++m_count;
    }
    bool isEmpty() const noexcept { return m_count == 0; }
    /// Prints the first lines, or all, and how many more there are.
    void print(const Output& output) const;

private:
    static constexpr std::size_t kMost = 50;
    bool m_showsAll;
    std::size_t m_count = 0;
    std::vector<std::string> m_lines;  ///< those that are shown
};

}  // namespace kshmi
