#include "workbench/text/nearest.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

#include "host/unicode.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

// Longer texts are not typed by hand.
constexpr std::size_t kLongest = 300;
constexpr std::size_t kFarthest = 5;

char32_t folded(char32_t character) { return character >= U'A' && character <= U'Z' ? character + 32 : character; }

std::u32string foldedCharacters(std::string_view text) {
    const std::u16string units = toUtf16(text);
    std::u32string characters;
    for (std::size_t at = 0; at < units.size();) characters += folded(ks_host::takeCodePoint(units, at));
    return characters;
}

// A table's row for one more character of `one`, from the two rows above it.
std::size_t fillRow(std::u32string_view one, std::u32string_view other, std::size_t i,
                    std::vector<std::vector<std::size_t>>& rows) {
    const std::vector<std::size_t>& above = rows[(i - 1) % 3];
    std::vector<std::size_t>& row = rows[i % 3];
    row[0] = i;
    for (std::size_t j = 1; j <= other.size(); ++j) {
        const bool isEqual = one[i - 1] == other[j - 1];
        row[j] = std::min({above[j] + 1, row[j - 1] + 1, above[j - 1] + (isEqual ? 0U : 1U)});
        const bool isSwapped = i > 1 && j > 1 && one[i - 1] == other[j - 2] && one[i - 2] == other[j - 1];
        if (isSwapped) row[j] = std::min(row[j], rows[(i - 2) % 3][j - 2] + 1);
    }
    return *std::min_element(row.begin(), row.end());
}

}  // namespace

std::size_t editDistance(std::string_view one, std::string_view other, std::size_t most) {
    const std::u32string from = foldedCharacters(one);
    const std::u32string to = foldedCharacters(other);
    const std::size_t apart = from.size() > to.size() ? from.size() - to.size() : to.size() - from.size();
    if (apart > most) return most + 1;
    std::vector<std::vector<std::size_t>> rows(3, std::vector<std::size_t>(to.size() + 1));
    for (std::size_t j = 0; j <= to.size(); ++j) rows[0][j] = j;
    std::size_t nearest = 0;
    for (std::size_t i = 1; i <= from.size(); ++i) {
        const std::size_t before = nearest;
        nearest = fillRow(from, to, i, rows);
        // A swap reaches two rows back.
        if (std::min(before, nearest) > most) return most + 1;
    }
    return std::min(rows[from.size() % 3][to.size()], most + 1);
}

Nearest::Nearest(std::string_view written)
    : m_written(written.size() > kLongest ? std::string_view() : written),
      m_farthest(std::min(kFarthest, (m_written.size() + 1) / 3)) {}

void Nearest::offer(std::string_view name, std::string_view call) {
    const std::size_t sizes[] = {name.size(), m_written.size()};
    // A character has four bytes at most.
    if (m_written.empty() || name.size() > 4 * (m_written.size() + m_farthest) ||
        4 * (sizes[0] + m_farthest) < sizes[1])
        return;
    const std::size_t distance = editDistance(m_written, name, m_farthest);
    if (distance > m_farthest) return;
    m_near.emplace_back(distance, call);
}

std::vector<std::string> Nearest::found(std::size_t most) const {
    auto sorted = m_near;
    std::stable_sort(sorted.begin(), sorted.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<std::string> names;
    for (const auto& [distance, name] : sorted)
        if (names.size() < most && std::find(names.begin(), names.end(), name) == names.end()) names.push_back(name);
    return names;
}

std::string Nearest::question() const {
    std::vector<std::string> names = found();
    if (names.empty()) return {};
    for (std::string& name : names) name = inQuotes(std::string_view(name));
    const std::string last = std::move(names.back());
    names.pop_back();
    return fmt::format("; did you mean {}{}{}?", fmt::join(names, ", "), names.empty() ? "" : " or ", last);
}

}  // namespace workbench
