#include "kshmi/print/block_tree.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include "kshmi/print/text_table.h"
#include "workbench/session/script.h"
#include "workbench/text/text.h"

namespace kshmi {

using namespace workbench;

namespace {

using kestrel::Block;
using Segments = std::vector<std::u16string_view>;

constexpr std::size_t kIndent = 2;
constexpr std::size_t kWidestName = 48;

Segments segmentsOf(std::u16string_view path) {
    Segments segments;
    for (std::size_t slash = path.find(u'/'); slash != std::u16string_view::npos; slash = path.find(u'/')) {
        segments.push_back(path.substr(0, slash));
        path.remove_prefix(slash + 1);
    }
    segments.push_back(path);
    return segments;
}

struct Node {
    Segments segments;
    const Block* block;
};

std::vector<Node> sortedNodes(const kestrel::Model& model) {
    std::vector<Node> nodes;
    nodes.reserve(model.blocks().size());
    for (const Block& block : model.blocks()) nodes.push_back({segmentsOf(block.path), &block});
    std::sort(nodes.begin(), nodes.end(), [](const Node& a, const Node& b) { return a.segments < b.segments; });
    return nodes;
}

struct Line {
    std::string name;
    std::string badges;
};

class TreePrinter {
public:
    TreePrinter(const Session& session, const Output& output)
        : m_session(session), m_output(output), m_badges(blocksWithBadges(session)) {}

    std::vector<Line> lines(std::size_t most) {
        Segments previous;
        for (const Node& node : sortedNodes(m_session.model())) {
            addMissingParents(previous, node.segments);
            const char* const mark = m_badges.contains(node.block->handle) ? " *" : "";
            add(node.segments.size() - 1, printable(node.segments.back()) + mark, ports(*node.block));
            if (node.block->chart) addChart(*node.block, node.segments.size());
            previous = node.segments;
            if (m_lines.size() > most) break;
        }
        return std::move(m_lines);
    }

private:
    void add(std::size_t depth, const std::string& name, std::string badges) {
        m_lines.push_back({std::string(depth * kIndent, ' ') + name, std::move(badges)});
    }

    void addMissingParents(const Segments& previous, const Segments& segments) {
        std::size_t common = 0;
        while (common + 1 < segments.size() && common < previous.size() && previous[common] == segments[common])
            ++common;
        for (; common + 1 < segments.size(); ++common) add(common, printable(segments[common]) + "/", "");
    }

    std::string ports(const Block& block) const {
        std::string text;
        for (int port = 1; port <= static_cast<int>(block.outputs.size()); ++port)
            text += (port > 1 ? "  " : "") + badge(m_session.isObserved(block, port), m_output) + " " +
                    std::to_string(port) + " " + printable(portName({&block, port, std::nullopt}));
        return text;
    }

    void addChart(const Block& block, std::size_t depth) {
        for (const ChartItem& item : chartItemsOf(block)) {
            std::string observed;
            for (const char16_t* const activity : kActivities)
                if (m_session.isObserved(block, item, activity)) observed += " " + toUtf8(activity);
            add(depth, nameOf(item), badge(m_session.isAnyObserved(block, item), m_output) + observed);
        }
    }

    /// With what "--ssid" takes.
    static std::string nameOf(const ChartItem& item) {
        if (item.ssid == 0) return "(chart)";
        const char* const kind = item.domainType == kStateDomain ? "(state) " : "(data) ";
        return kind + printable(item.subPath) + " #" + std::to_string(item.ssid);
    }

    const Session& m_session;
    const Output& m_output;
    std::set<double> m_badges;
    std::vector<Line> m_lines;
};

}  // namespace

std::string badge(bool isObserved, const Output& output) {
    if (!isObserved) return "[ ]";
    return output.isTerminal ? "\x1b[32m[x]\x1b[0m" : "[x]";
}

std::set<double> blocksWithBadges(const Session& session) {
    std::set<double> handles;
    ks_hmi::InstrumentedSignals::getPortsWithBadges(script::modelObject(session.model().name()).get(), handles);
    return handles;
}

void printBlockTree(const Session& session, const Output& output, std::size_t most) {
    const std::vector<Line> lines = TreePrinter(session, output).lines(most);
    std::size_t width = 0;
    for (const Line& line : lines) width = std::max(width, std::min(displayWidth(line.name), kWidestName));
    for (std::size_t i = 0; i < std::min(most, lines.size()); ++i) {
        const Line& line = lines[i];
        const std::size_t padding = width - std::min(width, displayWidth(line.name)) + kIndent;
        output.out << line.name << (line.badges.empty() ? "" : std::string(padding, ' ') + line.badges) << '\n';
    }
    if (lines.size() > most)
        output.out << "... \"kshmi show\" prints all " << session.model().blocks().size() << " blocks\n";
}

}  // namespace kshmi
