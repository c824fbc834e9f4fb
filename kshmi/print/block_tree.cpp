#include "kshmi/print/block_tree.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <string>
#include <vector>

#include "kshmi/print/text_table.h"
#include "workbench/text/text.h"

namespace kshmi {

using namespace workbench;

namespace {

constexpr std::size_t kIndent = 2;
constexpr std::size_t kWidestName = 48;

struct Line {
    std::string name;
    std::string badges;
};

std::string badge(bool isObserved, const Output& output) {
    if (!isObserved) return "[ ]";
    return output.isTerminal ? "\x1b[32m[x]\x1b[0m" : "[x]";
}

std::string indented(std::size_t depth, const std::string& name) { return std::string(depth * kIndent, ' ') + name; }

std::string nameOf(const BlockNode& node) {
    return printable(node.name) + (!node.block ? "/" : node.hasBadge ? " *" : "");
}

/// With what "--ssid" takes.
std::string nameOf(const ChartItem& item) {
    if (item.ssid == 0) return "(chart)";
    return fmt::format("{} {} #{}", item.domainType == kStateDomain ? "(state)" : "(data)", printable(item.subPath),
                       item.ssid);
}

Line lineOf(const BlockNode& node, const Output& output) {
    std::vector<std::string> ports;
    for (const PortNode& port : node.ports)
        ports.push_back(fmt::format("{} {} {}", badge(port.isObserved, output), port.port, printable(port.name)));
    return {indented(node.depth, nameOf(node)), fmt::format("{}", fmt::join(ports, "  "))};
}

Line lineOf(const ItemNode& node, std::size_t depth, const Output& output) {
    std::string badges = badge(node.isObserved, output);
    for (const std::u16string& activity : node.activities) badges += " " + toUtf8(activity);
    return {indented(depth, nameOf(node.item)), badges};
}

std::vector<Line> linesOf(const Session& session, const Output& output, std::size_t most) {
    std::vector<Line> lines;
    for (const BlockNode& node : blockTree(session, most)) {
        lines.push_back(lineOf(node, output));
        for (const ItemNode& item : node.items) lines.push_back(lineOf(item, node.depth + 1, output));
    }
    return lines;
}

}  // namespace

void printBlockTree(const Session& session, const Output& output, std::size_t most) {
    const std::vector<Line> lines = linesOf(session, output, most);
    std::size_t width = 0;
    for (const Line& line : lines) width = std::max(width, std::min(displayWidth(line.name), kWidestName));
    for (std::size_t i = 0; i < std::min(most, lines.size()); ++i) {
        const Line& line = lines[i];
        output.out << (line.badges.empty() ? line.name
                                           : fmt::format("{:{}}{}", line.name, width + kIndent, line.badges))
                   << '\n';
    }
    if (lines.size() > most)
        output.out << fmt::format("... \"kshmi show\" prints all {} blocks\n", session.model().blocks().size());
}

}  // namespace kshmi
