#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace workbench {

/// How many characters must be put in, taken out, replaced or swapped with their neighbour to get from one text to the
/// other; letters of A to Z in the other case count as the same. More than `most` is told as `most + 1`.
std::size_t editDistance(std::string_view one, std::string_view other, std::size_t most);

/// Finds what somebody may have meant: of the names offered, those spelled most like the one that was written.
class Nearest {
public:
    /// UTF-8.
    explicit Nearest(std::string_view written);

    /// Offers a name. `call` is what to call it in the answer, when that is not the name itself.
    void offer(std::string_view name) { offer(name, name); }
    void offer(std::string_view name, std::string_view call);

    /// The nearest first, equally near ones as they were offered, `most` at most; empty when none is near.
    std::vector<std::string> found(std::size_t most = 3) const;
    /// `; did you mean "a", "b" or "c"?`, printable; empty when none is near.
    std::string question() const;

private:
    std::string m_written;
    std::size_t m_farthest;
    std::vector<std::pair<std::size_t, std::string>> m_near;  ///< with their distance
};

}  // namespace workbench
