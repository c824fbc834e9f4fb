#include "workbench/text/columns.h"

#include <locale.h>
#include <wchar.h>

#include <algorithm>
#include <boost/locale/utf.hpp>

namespace workbench {

namespace {

constexpr std::string_view kDots = "...";

// The C library knows how wide characters are, whatever the user's language is.
class WidthTable {
public:
    WidthTable() noexcept {
        static const locale_t unicode = ::newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
        if (unicode != nullptr) m_before = ::uselocale(unicode);
    }
    WidthTable(const WidthTable&) = delete;
    WidthTable& operator=(const WidthTable&) = delete;
    ~WidthTable() {
        if (m_before != nullptr) ::uselocale(m_before);
    }
    std::size_t widthOf(char32_t character) const noexcept {
        const int width = m_before != nullptr ? ::wcwidth(static_cast<wchar_t>(character)) : 1;
        return width < 0 ? 1 : static_cast<std::size_t>(width);
    }

private:
    locale_t m_before = nullptr;
};

bool isAscii(std::string_view text) noexcept {
    return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

// A character with the marks on it.
struct Cluster {
    std::string_view bytes;
    std::size_t width = 0;
};

std::vector<Cluster> clustersOf(std::string_view text) {
    const WidthTable table;
    std::vector<Cluster> clusters;
    for (const char *at = text.data(), *const end = at + text.size(); at != end;) {
        const char* next = at;
        const char32_t character = boost::locale::utf::utf_traits<char>::decode(next, end);
        if (next == at) ++next;
        const std::size_t width = table.widthOf(character);
        if (width == 0 && !clusters.empty())
            clusters.back().bytes = {clusters.back().bytes.data(), next};
        else
            clusters.push_back({{at, next}, width});
        at = next;
    }
    return clusters;
}

// How many clusters, from `first` on, fit into so many columns.
template <class Iterator>
std::size_t fitting(Iterator first, Iterator last, std::size_t columns) {
    std::size_t count = 0;
    for (; first != last && first->width <= columns; ++first, ++count) columns -= first->width;
    return count;
}

std::string_view joined(const std::vector<Cluster>& clusters, std::size_t from, std::size_t to) {
    if (from == to) return {};
    return {clusters[from].bytes.data(), clusters[to - 1].bytes.data() + clusters[to - 1].bytes.size()};
}

// Behind the last of the clusters that a line ends with: at a blank or mark in its last two thirds, else where it is
// full.
std::size_t lineEnd(const std::vector<Cluster>& clusters, std::size_t from, std::size_t width) {
    const std::size_t full =
        from +
        std::max<std::size_t>(1, fitting(clusters.begin() + static_cast<std::ptrdiff_t>(from), clusters.end(), width));
    if (full >= clusters.size()) return clusters.size();
    for (std::size_t end = full; end > from + (full - from) / 3; --end)
        if (clusters[end - 1].bytes.find_first_of(" /_-.,:") == 0) return end;
    return full;
}

}  // namespace

std::size_t columnsOf(std::string_view text) {
    if (isAscii(text)) return text.size();
    std::size_t width = 0;
    for (const Cluster& cluster : clustersOf(text)) width += cluster.width;
    return width;
}

std::string shortened(std::string_view text, std::size_t most) {
    if (text.size() <= most || columnsOf(text) <= most) return std::string(text);
    const std::vector<Cluster> clusters = clustersOf(text);
    const std::size_t kept = most - std::min(most, kDots.size());
    const std::size_t head = fitting(clusters.begin(), clusters.end(), kept - kept / 2);
    const std::size_t tail = fitting(clusters.rbegin(), clusters.rend(), kept / 2);
    return std::string(joined(clusters, 0, head)) + std::string(kDots) +
           std::string(joined(clusters, clusters.size() - tail, clusters.size()));
}

std::vector<std::string> wrapped(std::string_view text, std::size_t width, std::size_t mostLines) {
    // Lines that break at blanks are a third full at least.
    const std::string shown = shortened(text, width * mostLines);
    const std::vector<Cluster> clusters = clustersOf(shown);
    std::vector<std::string> lines;
    for (std::size_t from = 0; from < clusters.size();) {
        const std::size_t end = lineEnd(clusters, from, width);
        lines.emplace_back(joined(clusters, from, end));
        from = end;
    }
    if (lines.size() > mostLines) return wrapped(shortened(text, width * mostLines / 5), width, 5 * mostLines);
    if (lines.empty()) lines.emplace_back();
    return lines;
}

}  // namespace workbench
