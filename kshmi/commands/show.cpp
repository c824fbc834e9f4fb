#include <fmt/format.h>

#include <limits>
#include <ranges>

#include "kshmi/commands/command_options.h"
#include "kshmi/commands/commands.h"
#include "kshmi/print/block_tree.h"
#include "kshmi/print/text_table.h"
#include "signals/signal_specification.h"
#include "workbench/find/client_names.h"
#include "workbench/find/watching.h"
#include "workbench/json/json_object.h"
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
    object.number("position", position + 1).text("uuid", toUtf16(signal.m_uuid));
    object.text("block", source.block->path).text("subPath", signal.m_subPath);
    object.number("port", source.port).text("portName", portName(source));
    object.text("signal", signal.m_signalName).text("domain", signal.m_domainType);
    object.text("activity", signal.getValueForDomainParams(u"Activity"));
    object.text("ssid", signal.getValueForDomainParams(u"SSID"));
    object.number("decimation", signal.m_decimation);
    object.number("maxPoints", signal.m_maxPoints);
    object.truth("frameBased", signal.m_isFrameBased).truth("hidden", signal.m_hideInPLV);
    object.truth("buffered", signal.m_targetBufferedStreaming).text("visualType", signal.m_visualType);
    object.close();
}

void appendPorts(std::string& out, const Session& session, const kestrel::Block& block) {
    int port = 0;
    appendJsonArray(out, block.outputs, [&](std::u16string_view name) {
        JsonObject object(out);
        object.text("name", name).truth("observed", session.isObserved(block, ++port)).close();
    });
}

void appendItems(std::string& out, const Session& session, const kestrel::Block& block) {
    appendJsonArray(out, chartItemsOf(block), [&](const ChartItem& item) {
        JsonObject object(out);
        object.text("domain", item.domainType).text("subPath", item.subPath).number("ssid", item.ssid);
        object.truth("observed", session.isAnyObserved(block, item)).close();
    });
}

void appendClient(std::string& out, const Session& session, std::size_t position, const SignalUuids& uuids) {
    const ks_hmi::SignalClient& client = *session.clients().get(position);
    const std::optional<std::size_t> signal = uuids.positionOf(client.m_signalUUID);
    JsonObject object(out);
    object.number("position", position + 1).text("uuid", std::string_view(client.m_uuid));
    object.text("type", std::string_view(client.m_observerType));
    signal ? object.number("signal", *signal + 1) : object.null("signal");
    object.truth("dangling", watched(client, uuids) == Watched::gone);
    object.truth("deprecated", client.isDeprecatedObserver());
    object.close();
}

void appendBlock(std::string& out, const Session& session, const kestrel::Block& block, bool hasBadge) {
    JsonObject object(out);
    object.text("path", block.path).text("eid", toUtf16(block.eid)).name("outputs");
    appendPorts(out, session, block);
    if (block.chart) {
        object.name("chart");
        appendItems(out, session, block);
    }
    object.truth("badge", hasBadge).close();
}

void printJson(const Session& session, std::ostream& out) {
    constexpr JsonLayout kParts{"", ",\n", ""};
    constexpr JsonLayout kElements{"\n  ", ",\n  ", ""};
    const auto positions = [](std::size_t count) { return std::views::iota(std::size_t{0}, count); };
    const std::set<double> badges = blocksWithBadges(session);
    const SignalUuids uuids(session);
    std::string text;
    JsonObject document(text, kParts);
    document.text("model", session.model().name()).name("signals");
    appendJsonArray(
        text, positions(session.signals().getCount()), [&](std::size_t i) { appendSignal(text, session, i); },
        kElements);
    document.name("blocks");
    appendJsonArray(
        text, session.model().blocks(),
        [&](const kestrel::Block& block) { appendBlock(text, session, block, badges.contains(block.handle)); },
        kElements);
    document.name("clients");
    appendJsonArray(
        text, positions(session.clients().getCount()), [&](std::size_t i) { appendClient(text, session, i, uuids); },
        kElements);
    document.close();
    out << printableJson(text) << '\n';
}

int runShow(const ShowArguments& arguments, const Output& output) {
    kshmi::enterHost(output.err);
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
