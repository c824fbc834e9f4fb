#include "kshmi/print/shown_model.h"

#include <fmt/format.h>

#include <algorithm>

#include "kshmi/print/block_tree.h"
#include "kshmi/print/settings_text.h"
#include "kshmi/print/text_table.h"
#include "signals/signal_specification.h"
#include "workbench/find/client_names.h"
#include "workbench/find/watching.h"
#include "workbench/text/columns.h"
#include "workbench/text/text.h"

namespace kshmi {

using namespace workbench;

namespace {

using ks_hmi::SignalSpecification;
constexpr auto kRight = TextTable::Align::right;

// As references name it, with the port's name or the item's activity.
std::string sourceText(const SignalSpecification& signal, const SignalSource& source) {
    const std::string block = printable(source.block->path);
    if (!source.item) return fmt::format("{}:{} ({})", block, source.port, printable(portName(source)));
    const std::string item = signal.m_subPath.empty() ? "" : "/" + printable(signal.m_subPath);
    return fmt::format("{}{} ({})", block, item, printable(activityOf(signal)));
}

std::string settingsText(const SignalSpecification& signal) {
    const SignalFlags flags{signal.m_isFrameBased, signal.m_hideInPLV, signal.m_targetBufferedStreaming,
                            signal.m_excludeForSave};
    return kshmi::settingsText(signal.m_decimation, signal.m_maxPoints, flags, signal.m_visualType);
}

void printSignals(const ShownModel& shown, const Output& output) {
    if (shown.signals.empty()) return;
    TextTable table({{"#", kRight}, {"SOURCE"}, {"SIGNAL"}, {"SETTINGS"}});
    for (const std::size_t position : shown.signals) {
        const SignalSpecification& signal = *shown.session->signals().get(position);
        table.add({std::to_string(position + 1), sourceText(signal, sourceOf(shown.session->model(), signal)),
                   printable(signal.m_signalName), settingsText(signal)});
    }
    output.out << '\n';
    table.print(output.out, output.width);
}

void printClients(const ShownModel& shown, const Output& output) {
    if (shown.clients.empty()) return;
    const Session& session = *shown.session;
    TextTable table({{"#", kRight}, {"CLIENT"}, {"OF SIGNAL", kRight}, {"NAME"}, {"RATE", kRight}, {"NOTES"}});
    const SignalUuids uuids(session);
    for (const std::size_t position : shown.clients) {
        const ks_hmi::SignalClient& client = *session.clients().get(position);
        const std::optional<std::size_t> signal = uuids.positionOf(client.m_signalUUID);
        table.add({std::to_string(position + 1), printable(std::string_view(client.m_observerType)),
                   signal ? std::to_string(*signal + 1) : "",
                   signal ? printable(session.signals().get(*signal)->m_signalName) : "",
                   std::to_string(static_cast<std::uint32_t>(client.m_updateRate)),
                   notesOn(client, uuids, session.model().name())});
    }
    output.out << '\n';
    table.print(output.out, output.width);
}

// "3 of 12 signals, 75 of 87 blocks" are not shown; empty when all are.
std::string leftOutOf(const ShownModel& shown) {
    std::vector<std::string> texts;
    for (const Share& share : sharesOf(shown))
        if (share.shown < share.all)
            texts.push_back(fmt::format("{} of {}", share.all - share.shown, counted(share.all, share.what)));
    return listed(texts);
}

}  // namespace

std::vector<Share> sharesOf(const ShownModel& shown) {
    const kestrel::Model& model = shown.session->model();
    Share blocks{"block", "blocks", 0, model.blocks().size()};
    Share ports{"port", "ports"};
    Share items{"chart item", "items"};
    for (const BlockNode& node : shown.blocks) {
        blocks.shown += node.block != nullptr ? 1U : 0U;
        ports.shown += node.ports.size();
        items.shown += node.items.size();
    }
    for (const kestrel::Block& block : model.blocks()) {
        ports.all += block.outputs.size();
        items.all += chartItemsOf(block).size();
    }
    return {{"signal", "signals", shown.signals.size(), shown.session->signals().getCount()},
            {"client", "clients", shown.clients.size(), shown.session->clients().getCount()},
            blocks,
            ports,
            items};
}

void printShown(const ShownModel& shown, const Output& output) {
    const Session& session = *shown.session;
    output.out << fmt::format("model {}: {}, {}, {}\n", shortened(printable(session.model().name()), 120),
                              counted(session.model().blocks().size(), "block"),
                              counted(session.signals().getCount(), "signal"),
                              counted(session.clients().getCount(), "client"));
    printSignals(shown, output);
    printClients(shown, output);
    if (!shown.blocks.empty()) {
        output.out << "\nblocks ([x] observed, * with a badge)\n";
        printBlockTree(shown.blocks, output);
    }
    if (const std::string leftOut = leftOutOf(shown); !leftOut.empty())
        output.out << fmt::format("\nleft out ({}): {}\n", shown.leftOutFor, leftOut);
}

}  // namespace kshmi
