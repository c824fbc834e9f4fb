#include <fmt/format.h>

#include <limits>

#include "kshmi/commands/command_options.h"
#include "kshmi/commands/commands.h"
#include "kshmi/print/block_tree.h"
#include "kshmi/print/text_table.h"
#include "signals/signal_specification.h"
#include "workbench/find/client_names.h"
#include "workbench/find/watching.h"
#include "workbench/json/json_object.h"
#include "workbench/session/host_process.h"
#include "workbench/text/text.h"

namespace kshmi {

namespace {

using namespace workbench;

struct ShowArguments {
    std::string file;
    bool isJson = false;
};

using ks_hmi::SignalSpecification;

SignalFlags flagsOf(const SignalSpecification& signal) {
    return {signal.m_isFrameBased, signal.m_hideInPLV, signal.m_targetBufferedStreaming, signal.m_excludeForSave};
}

std::vector<std::string> rowOf(const Session& session, std::size_t position) {
    const SignalSpecification& signal = *session.signals().get(position);
    const SignalSource source = sourceOf(session.model(), signal);
    std::string block = printable(source.block->path);
    if (!signal.m_subPath.empty()) block += "/" + printable(signal.m_subPath);
    return {std::to_string(position + 1),
            block,
            source.item ? "" : std::to_string(source.port),
            printable(portName(source)),
            printable(signal.m_signalName),
            signal.m_domainType.empty() ? "port" : printable(signal.m_domainType),
            printable(signal.getValueForDomainParams(u"Activity")),
            std::to_string(signal.m_decimation),
            std::to_string(signal.m_maxPoints),
            textOf(flagsOf(signal))};
}

void printClients(const Session& session, std::ostream& out) {
    if (session.clients().getCount() == 0) return;
    constexpr auto kRight = TextTable::Align::right;
    TextTable table({{"#", kRight}, {"OBSERVER"}, {"OF SIGNAL", kRight}, {"NAME"}, {"RATE", kRight}, {"NOTES"}});
    const SignalUuids uuids(session);
    for (std::size_t i = 0; i < session.clients().getCount(); ++i) {
        const ks_hmi::SignalClient& client = *session.clients().get(i);
        const std::optional<std::size_t> signal = uuids.positionOf(client.m_signalUUID);
        table.add({std::to_string(i + 1), printable(std::string_view(client.m_observerType)),
                   signal ? std::to_string(*signal + 1) : "",
                   signal ? printable(session.signals().get(*signal)->m_signalName) : "",
                   std::to_string(static_cast<std::uint32_t>(client.m_updateRate)),
                   notesOn(client, watched(client, uuids))});
    }
    out << '\n';
    table.print(out);
}

void printText(const Session& session, const Output& output) {
    constexpr auto kRight = TextTable::Align::right;
    const std::size_t count = session.signals().getCount();
    output.out << fmt::format("model {}: {}, {}, {}\n", printable(session.model().name()),
                              counted(session.model().blocks().size(), "block"), counted(count, "signal"),
                              counted(session.clients().getCount(), "client"));
    if (count > 0) {
        TextTable table({{"#", kRight},
                         {"BLOCK"},
                         {"PORT", kRight},
                         {"PORT NAME"},
                         {"SIGNAL"},
                         {"DOMAIN"},
                         {"ACTIVITY"},
                         {"DECIMATION", kRight},
                         {"MAX POINTS", kRight},
                         {"FLAGS"}});
        for (std::size_t i = 0; i < count; ++i) table.add(rowOf(session, i));
        output.out << '\n';
        table.print(output.out);
    }
    printClients(session, output.out);
    if (session.model().blocks().empty()) return;
    output.out << "\nblocks ([x] observed, * with a badge)\n";
    printBlockTree(session, output, std::numeric_limits<std::size_t>::max() - 1);
}

void appendSignal(std::string& out, const Session& session, std::size_t position) {
    const SignalSpecification& signal = *session.signals().get(position);
    const SignalSource source = sourceOf(session.model(), signal);
    JsonObject object(out);
    object.plain("position", std::to_string(position + 1)).text("uuid", toUtf16(signal.m_uuid));
    object.text("block", source.block->path).text("subPath", signal.m_subPath);
    object.plain("port", std::to_string(source.port)).text("portName", portName(source));
    object.text("signal", signal.m_signalName).text("domain", signal.m_domainType);
    object.text("activity", signal.getValueForDomainParams(u"Activity"));
    object.text("ssid", signal.getValueForDomainParams(u"SSID"));
    object.plain("decimation", std::to_string(signal.m_decimation));
    object.plain("maxPoints", std::to_string(signal.m_maxPoints));
    object.truth("frameBased", signal.m_isFrameBased).truth("hidden", signal.m_hideInPLV);
    object.truth("buffered", signal.m_targetBufferedStreaming).text("visualType", signal.m_visualType);
    object.close();
}

std::string portsJson(const Session& session, const kestrel::Block& block) {
    std::string out;
    appendJsonList(out, block.outputs.size(), [&](std::size_t i) {
        JsonObject object(out);
        object.text("name", block.outputs[i]);
        object.truth("observed", session.isObserved(block, static_cast<int>(i) + 1)).close();
    });
    return out;
}

std::string itemsJson(const Session& session, const kestrel::Block& block) {
    const std::vector<ChartItem> items = chartItemsOf(block);
    std::string out;
    appendJsonList(out, items.size(), [&](std::size_t i) {
        JsonObject object(out);
        object.text("domain", items[i].domainType).text("subPath", items[i].subPath);
        object.plain("ssid", std::to_string(items[i].ssid));
        object.truth("observed", session.isAnyObserved(block, items[i])).close();
    });
    return out;
}

void appendClient(std::string& out, const Session& session, std::size_t position, const SignalUuids& uuids) {
    const ks_hmi::SignalClient& client = *session.clients().get(position);
    const std::optional<std::size_t> signal = uuids.positionOf(client.m_signalUUID);
    JsonObject object(out);
    object.plain("position", std::to_string(position + 1)).text("uuid", std::string_view(client.m_uuid));
    object.text("type", std::string_view(client.m_observerType));
    object.plain("signal", signal ? std::to_string(*signal + 1) : "null");
    object.truth("dangling", watched(client, uuids) == Watched::gone);
    object.truth("deprecated", client.isDeprecatedObserver());
    object.close();
}

void appendBlock(std::string& out, const Session& session, const kestrel::Block& block, bool hasBadge) {
    JsonObject object(out);
    object.text("path", block.path).text("eid", toUtf16(block.eid)).plain("outputs", portsJson(session, block));
    if (block.chart) object.plain("chart", itemsJson(session, block));
    object.truth("badge", hasBadge);
    object.close();
}

void printJson(const Session& session, std::ostream& out) {
    std::string text = "{\"model\": ";
    appendJsonText(text, std::u16string_view(session.model().name()));
    text += ",\n\"signals\": [";
    appendJsonLines(text, session.signals().getCount(), [&](std::size_t i) { appendSignal(text, session, i); });
    text += "],\n\"blocks\": [";
    const std::set<double> badges = blocksWithBadges(session);
    const auto& blocks = session.model().blocks();
    appendJsonLines(text, blocks.size(),
                    [&](std::size_t i) { appendBlock(text, session, blocks[i], badges.contains(blocks[i].handle)); });
    text += "],\n\"clients\": [";
    const SignalUuids uuids(session);
    appendJsonLines(text, session.clients().getCount(), [&](std::size_t i) { appendClient(text, session, i, uuids); });
    out << printableJson(text) << "]}\n";
}

int runShow(const ShowArguments& arguments, const Output& output) {
    enterHost(output.err);
    const Session session(arguments.file);
    if (arguments.isJson)
        printJson(session, output.out);
    else
        printText(session, output);
    return kSuccess;
}

}  // namespace

void addShow(CLI::App& app, Run& run) {
    const auto arguments = std::make_shared<ShowArguments>();
    CLI::App* const command =
        addCommand(app, "show", "List a model's signals, its observers, and its blocks with what is observed",
                   "  kshmi show cruise.json\n  kshmi show cruise.json --json", arguments->file);
    command->add_flag("--json", arguments->isJson, "print JSON");
    runWith(*command, runShow, arguments, run);
}

}  // namespace kshmi
