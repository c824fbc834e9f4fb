#include <algorithm>
#include <string>

#include "report/sections/sections.h"
#include "workbench/text/text.h"

namespace report {

using namespace workbench;

namespace {

// Lists that lie deeper are told by their level: nobody sees that much indentation, and parsers give up on it.
constexpr std::size_t kDeepest = 24;

class TreeWriter {
public:
    TreeWriter(Html& html, const PageIndex& index)
        : m_html(html), m_index(index), m_nodes(index.tree()), m_children(childCounts(m_nodes)) {}

    void write() {
        m_html.add("<ul class=\"tree\">\n");
        for (std::size_t i = 0; i < m_nodes.size(); ++i) {
            closeTo(m_nodes[i].depth);
            i = writeNode(i);
        }
        closeTo(0);
        m_html.add("</ul>\n");
    }

private:
    // Ends the lists of what is not above a node of that depth.
    void closeTo(std::size_t depth) {
        for (; !m_open.empty() && m_open.back() >= depth; m_open.pop_back()) m_html.add("</ul></details></li>\n");
    }

    // The last of the parents without blocks of their own that have only one another.
    std::size_t endOfChain(std::size_t i) const {
        const auto isBare = [&](std::size_t node) { return m_nodes[node].block == nullptr; };
        while (isBare(i) && m_children[i] == 1 && isBare(i + 1)) ++i;
        return i;
    }

    static std::vector<std::size_t> childCounts(const std::vector<BlockNode>& nodes) {
        std::vector<std::size_t> counts(nodes.size());
        std::vector<std::size_t> above;
        for (std::size_t i = 0; i < nodes.size(); ++i) {
            above.resize(nodes[i].depth);
            if (!above.empty()) ++counts[above.back()];
            above.push_back(i);
        }
        return counts;
    }

    // Returns the last node that it has written.
    std::size_t writeNode(std::size_t first) {
        const std::size_t last = endOfChain(first);
        const BlockNode& node = m_nodes[last];
        const bool nests = m_children[last] > 0 && m_open.size() < kDeepest;
        m_html.add("<li id=\"b{}\">{}", last + 1, Markup{nests ? "<details open><summary>" : "<p>"});
        writeName(first, last);
        writePorts(node);
        m_html.add("{}", Markup{nests ? "</summary>" : "</p>"});
        writeItems(node);
        if (nests) m_open.push_back(node.depth);
        m_html.add("{}", Markup{nests ? "<ul>\n" : "</li>\n"});
        return last;
    }

    void writeName(std::size_t first, std::size_t last) {
        const BlockNode& node = m_nodes[last];
        m_html.add("<b{}>", Markup{node.block == nullptr ? " class=\"bare\""
                                   : node.hasBadge       ? " class=\"badge\""
                                                         : ""});
        if (m_open.size() == kDeepest && node.depth > kDeepest) m_html.add("<i>level {}</i> ", node.depth + 1);
        for (std::size_t i = first; i <= last; ++i)
            m_html.add("{}{}", Markup{i > first ? "<i>/</i>" : ""}, Name(m_nodes[i].name));
        m_html.add("</b>");
    }

    void writePort(const BlockNode& node, const PortNode& port) {
        const std::optional<std::size_t> signal =
            port.isObserved ? m_index.signalOn({node.block, port.port, std::nullopt}) : std::nullopt;
        if (signal)
            m_html.add(" <a class=\"on\" href=\"#s{}\"><i>{}</i> {}</a>", *signal + 1, port.port, Name(port.name));
        else
            m_html.add(" <span class=\"{}\"><i>{}</i> {}</span>", port.isObserved ? "on" : "off", port.port,
                       Name(port.name));
    }

    void writePorts(const BlockNode& node) {
        if (node.ports.empty()) return;
        m_html.add("<span class=\"ports\">");
        for (const PortNode& port : node.ports) writePort(node, port);
        m_html.add("</span>");
    }

    void writeItems(const BlockNode& node) {
        if (node.items.empty()) return;
        m_html.add("<span class=\"ports items\">");
        for (const ItemNode& item : node.items) writeItem(node, item);
        m_html.add("</span>");
    }

    void writeItem(const BlockNode& node, const ItemNode& item) {
        const std::optional<std::size_t> signal =
            item.isObserved ? m_index.signalOn({node.block, 0, item.item}) : std::nullopt;
        signal ? m_html.add(" <a class=\"on\" href=\"#s{}\">", *signal + 1)
               : m_html.add(" <span class=\"{}\">", item.isObserved ? "on" : "off");
        const bool isData = item.item.domainType == kDataDomain;
        if (item.item.ssid == 0)
            m_html.add("<i>the chart</i>");
        else
            m_html.add("<i>{}</i> {}", isData ? "datum" : "state", Name(item.item.subPath));
        for (const std::u16string& activity : item.activities)
            if (!isData) m_html.add(" <i>{}</i>", Name(activity));
        m_html.add("{}", Markup{signal ? "</a>" : "</span>"});
    }

    Html& m_html;
    const PageIndex& m_index;
    const std::vector<BlockNode>& m_nodes;
    std::vector<std::size_t> m_children;  // how many each node has
    std::vector<std::size_t> m_open;      // depths of the nodes whose lists are open
};

}  // namespace

void writeBlocks(Html& html, const Contents& contents, const PageIndex& index) {
    openSection(html, "blocks", "Blocks", contents.session.model().blocks().size());
    if (index.tree().empty()) {
        html.add("<p class=\"empty\">The model has no blocks yet.</p>\n");
    } else {
        html.add(
            "<p class=\"legend\"><span class=\"on\">observed</span> <span class=\"off\">not observed</span> "
            "<b class=\"badge\">with a badge in the editor</b></p>\n");
        TreeWriter(html, index).write();
    }
    closeSection(html);
}

}  // namespace report
