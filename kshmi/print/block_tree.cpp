#include "kshmi/print/block_tree.h"

#include <fmt/format.h>

#include <algorithm>
#include <string>

#include "workbench/text/columns.h"
#include "workbench/text/text.h"

namespace kshmi {

using namespace workbench;

namespace {

constexpr std::size_t kIndent = 2;
constexpr std::size_t kGap = 2;
constexpr std::size_t kWidestName = 48;
// Where lines have no end, ports go on in the next line and names are shortened, too.
constexpr std::size_t kLongestName = 120;
// Of so many parents without blocks in a row, only the first and the last are listed.
constexpr std::size_t kMostParents = 8;

// What stands behind a name: a port, or whether an item is observed.
struct Entry {
    bool isObserved = false;
    std::string text;
};

struct Line {
    std::string name;
    std::vector<Entry> entries{};
    std::size_t leftOut = 0;  // entries
};

class TreePrinter {
public:
    TreePrinter(const Output& output, std::size_t most) : m_output(output), m_most(most), m_width(output.width) {}

    std::vector<Line> lines(const std::vector<BlockNode>& nodes) const {
        std::vector<Line> lines;
        for (std::size_t i = 0; i < nodes.size() && lines.size() <= m_most;) {
            const std::size_t parents = bareParents(nodes, i);
            for (std::size_t k = 0; k < parents; ++k) {
                const std::size_t skipped =
                    k == kMostParents / 2 && parents > kMostParents ? parents - kMostParents : 0;
                if (skipped > 0)
                    lines.push_back({indented(nodes[i + k].depth, fmt::format("... {} more levels", skipped))});
                k += skipped;
                lines.push_back(lineOf(nodes[i + k]));
            }
            i += parents;
            if (i == nodes.size()) break;
            lines.push_back(lineOf(nodes[i]));
            addItems(lines, nodes[i]);
            ++i;
        }
        return lines;
    }

    void print(const std::vector<Line>& lines) const {
        const std::size_t count = std::min(lines.size(), m_most);
        std::size_t widest = 0;
        for (std::size_t i = 0; i < count; ++i) widest = std::max(widest, columnsOf(lines[i].name));
        const std::size_t column = std::min({widest, kWidestName, half()}) + kGap;
        for (std::size_t i = 0; i < count; ++i) printLine(lines[i], column);
    }

private:
    // How many from there on are parents without blocks, each of the next.
    static std::size_t bareParents(const std::vector<BlockNode>& nodes, std::size_t from) {
        std::size_t end = from;
        while (end < nodes.size() && nodes[end].block == nullptr) ++end;
        return end - from;
    }

    std::string indented(std::size_t depth, const std::string& name) const {
        const std::size_t deepest = half() / 3 / kIndent;
        const std::string blanks(std::min(depth, deepest) * kIndent, ' ');
        return depth <= deepest ? blanks + name : fmt::format("{}(level {}) {}", blanks, depth + 1, name);
    }

    Line lineOf(const BlockNode& node) const {
        const char* const mark = node.block == nullptr ? "/" : node.hasBadge ? " *" : "";
        Line line{indented(node.depth, shortName(node.name) + mark)};
        for (const PortNode& port : node.ports)
            line.entries.push_back({port.isObserved, fmt::format("{} {}", port.port, shortName(port.name))});
        line.leftOut = node.morePorts;
        return line;
    }

    void addItems(std::vector<Line>& lines, const BlockNode& node) const {
        for (const ItemNode& item : node.items) {
            std::string activities;
            for (const std::u16string& activity : item.activities) activities += " " + toUtf8(activity);
            lines.push_back({indented(node.depth + 1, nameOf(item.item)),
                             {{item.isObserved, activities.empty() ? "" : activities.substr(1)}}});
        }
        if (node.moreItems > 0)
            lines.push_back({indented(node.depth + 1, "... and " + counted(node.moreItems, "more item"))});
    }

    std::string shortName(const std::u16string& name) const { return shortened(printable(name), half()); }
    std::size_t lineWidth() const { return m_width > 0 ? m_width : kLongestName; }
    std::size_t half() const { return m_width > 0 ? m_width / 2 : kLongestName; }

    // With what "--ssid" takes.
    std::string nameOf(const ChartItem& item) const {
        if (item.ssid == 0) return "(chart)";
        return fmt::format("{} {} #{}", item.domainType == kStateDomain ? "(state)" : "(data)", shortName(item.subPath),
                           item.ssid);
    }

    std::string badge(bool isObserved) const {
        if (!isObserved) return "[ ]";
        return m_output.isColoured ? "\x1b[32m[x]\x1b[0m" : "[x]";
    }

    void printLine(const Line& line, std::size_t column) const {
        constexpr std::size_t kBadge = 4;
        constexpr std::size_t kLeast = 10;
        std::string text = line.name;
        std::size_t at = columnsOf(line.name);
        const auto append = [&](const std::string& shown, std::size_t width) {
            if (at > column && at + kGap + width > lineWidth()) {
                m_output.out << text << '\n';
                text.clear();
                at = 0;
            }
            const std::size_t blanks = at < column ? column - at : kGap;
            text.append(blanks, ' ').append(shown);
            at += blanks + width;
        };
        for (const Entry& entry : line.entries) {
            const std::string shown =
                shortened(entry.text, std::max(lineWidth(), column + kBadge + kLeast) - column - kBadge);
            append(shown.empty() ? badge(entry.isObserved) : fmt::format("{} {}", badge(entry.isObserved), shown),
                   kBadge + columnsOf(shown));
        }
        if (line.leftOut > 0) {
            const std::string more = "... and " + counted(line.leftOut, "more port");
            append(more, more.size());
        }
        m_output.out << text << '\n';
    }

    const Output& m_output;
    std::size_t m_most;  // lines
    std::size_t m_width;
};

}  // namespace

bool printBlockTree(const std::vector<BlockNode>& nodes, const Output& output, std::size_t most) {
    const TreePrinter printer(output, most);
    const std::vector<Line> lines = printer.lines(nodes);
    printer.print(lines);
    return lines.size() > most;
}

}  // namespace kshmi
