#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace workbench {

/// Numbers to tell things apart by that already have some.
class FreshNumbers {
public:
    explicit FreshNumbers(std::uint64_t most = std::numeric_limits<std::uint64_t>::max()) : m_most(most) {}
    void note(std::string_view text);  ///< What is taken; another text than a number is passed over.
    void note(std::uint64_t number) { m_taken.push_back(number); }
    /// One behind the largest; where there is none behind it, the largest that is free. It is taken from then on.
    std::uint64_t next();

private:
    std::uint64_t m_most;                   ///< of all that there may be
    std::vector<std::uint64_t> m_taken{0};  ///< sorted up to `m_sorted`
    std::size_t m_sorted = 1;
};

}  // namespace workbench
