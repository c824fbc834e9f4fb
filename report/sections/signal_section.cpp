#include <fmt/format.h>

#include "report/sections/client_text.h"
#include "report/sections/sections.h"
#include "signals/signal_specification.h"
#include "workbench/text/text.h"

namespace report {

using namespace workbench;

namespace {

using ks_hmi::SignalSpecification;

void writeSetting(Html& html, bool isSet, std::string_view text) {
    if (isSet) html.add("<li>{}</li>", text);
}

std::string ordinal(std::size_t number) {
    const std::size_t last = number % 10;
    const bool isTeen = number / 10 % 10 == 1;
    return grouped(number) + (isTeen || last == 0 || last > 3 ? "th" : last == 1 ? "st" : last == 2 ? "nd" : "rd");
}

void writeSettings(Html& html, const SignalSpecification& signal) {
    const auto decimation = static_cast<std::size_t>(signal.m_decimation);
    const auto points = static_cast<std::size_t>(signal.m_maxPoints);
    html.add("<ul class=\"settings\">");
    writeSetting(html, true, decimation == 1 ? "every sample" : fmt::format("every {} sample", ordinal(decimation)));
    writeSetting(html, points > 0, "the last " + countedText(points, "point"));
    writeSetting(html, signal.m_isFrameBased, "frame-based");
    writeSetting(html, signal.m_hideInPLV, "hidden in the viewer");
    writeSetting(html, signal.m_targetBufferedStreaming, "buffered");
    writeSetting(html, signal.m_excludeForSave, "not saved");
    if (!signal.m_visualType.empty()) html.add("<li>for {}</li>", Name(signal.m_visualType));
    html.add("</ul>");
}

// What a signal comes from, and where it stands in the tree.
void writeSource(Html& html, const PageIndex& index, const SignalSpecification& signal, const SignalSource& source) {
    html.add("<p class=\"from\">");
    const std::optional<std::size_t> node = index.nodeOf(source.block);
    if (node)
        html.add("<a href=\"#b{}\">{}</a>", *node + 1, Path(source.block->path));
    else
        html.add("{}", Path(signal.m_blockPath));
    if (isChartSignal(signal)) {
        if (!signal.m_subPath.empty()) html.add("<i>/</i>{}", Path(signal.m_subPath));
        html.add(" <span class=\"set\">{}</span>", Name(activityOf(signal)));
    } else {
        html.add("<i>:</i>{}", signal.m_outputPortIndex);
        const std::u16string port = node ? portName(source) : std::u16string();
        if (!port.empty()) html.add(" <span class=\"set\">{}</span>", Name(port));
    }
    if (!node) html.add(" <span class=\"amiss\">the block is gone</span>");
    html.add("</p>");
}

void writeClients(Html& html, const Contents& contents, const PageIndex& index, std::size_t position) {
    const Positions& clients = index.clientsOf(position);
    if (clients.empty()) {
        html.add("<p class=\"none\">no client</p>");
        return;
    }
    html.add("<ul class=\"clients\">");
    for (const std::size_t client : clients) writeClient(html, contents, index, client);
    html.add("</ul>");
}

void writeHead(Html& html, const PageIndex& index, const SignalSpecification& signal, std::size_t position) {
    html.add("<span class=\"no\">{}</span><div class=\"what\"><h3>", position + 1);
    signal.m_signalName.empty() ? html.add("<span class=\"none\">without a name</span>")
                                : html.add("{}", Name(signal.m_signalName));
    html.add("</h3>");
    writeSource(html, index, signal, index.source(position));
    if (const std::size_t findings = index.findingsOf(position); findings > 0)
        html.add("<p><a class=\"amiss\" href=\"#findings\">{}</a></p>", countedText(findings, "finding"));
    html.add("</div>");
}

void writePlots(Html& html, const RunView& view, std::size_t position) {
    const Positions& columns = view.columnsOf(position);
    if (columns.size() != 1) html.add("<div class=\"plots\">");
    if (columns.empty()) html.add("<p class=\"none\">not recorded</p>");
    for (const std::size_t column : columns)
        writePlot(html, view.frame(), view.run().columns[column], view.run().columns[column].element);
    if (columns.size() != 1) html.add("</div>");
}

// What the search's filters look for.
std::string whatHas(const PageIndex& index, std::size_t position) {
    const bool hasFindings = index.findingsOf(position) > 0;
    if (index.clientsOf(position).empty()) return hasFindings ? "findings" : "";
    return hasFindings ? "clients findings" : "clients";
}

void writeSignal(Html& html, const Contents& contents, const PageIndex& index, std::size_t position) {
    const SignalSpecification& signal = *contents.session.signals().get(position);
    const RunView* const run = index.run();
    html.add("<li id=\"s{}\"", position + 1);
    if (const std::string has = whatHas(index, position); !has.empty()) html.add(" data-has=\"{}\"", has);
    html.add(">");
    writeHead(html, index, signal, position);
    writeSettings(html, signal);
    writeClients(html, contents, index, position);
    if (run != nullptr) writePlots(html, *run, position);
    html.add("</li>\n");
}

}  // namespace

void writeSignals(Html& html, const Contents& contents, const PageIndex& index) {
    const std::size_t count = contents.session.signals().getCount();
    openSection(html, "signals", "Signals", count);
    if (count == 0)
        html.add(
            "<p class=\"empty\">Nothing is marked. A signal is the mark on a port or chart item that is worth "
            "watching.</p>\n");
    else
        html.add("<ol class=\"signals{} list\" data-has=\"observed\">\n",
                 Markup{index.run() == nullptr ? "" : " plotted"});
    for (std::size_t i = 0; i < count; ++i) writeSignal(html, contents, index, i);
    if (count > 0) html.add("</ol>\n");
    closeSection(html);
}

void writeStrays(Html& html, const Contents& contents, const PageIndex& index) {
    const Positions& strays = index.strays();
    if (strays.empty()) return;
    openSection(html, "clients", "Clients without a signal here", strays.size());
    html.add("<ul class=\"clients list\" data-has=\"clients\">\n");
    for (const std::size_t client : strays) writeClient(html, contents, index, client);
    html.add("</ul>\n");
    closeSection(html);
}

}  // namespace report
