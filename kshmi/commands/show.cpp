#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <set>

#include "kshmi/commands/command_options.h"
#include "kshmi/commands/commands.h"
#include "kshmi/commands/selecting.h"
#include "kshmi/commands/several_files.h"
#include "kshmi/print/json/json_records.h"
#include "kshmi/print/reports/name_notice.h"
#include "kshmi/print/shown_model.h"
#include "signals/signal_specification.h"
#include "workbench/find/below.h"
#include "workbench/find/signal_index.h"
#include "workbench/find/watching.h"
#include "workbench/json/json_object.h"
#include "workbench/session/records.h"
#include "workbench/text/text.h"

namespace kshmi {

namespace {

using namespace workbench;

struct ShowArguments {
    std::string file;
    SelectionArguments what;
    std::string below;
    bool isObservedOnly = false;
    std::uint32_t limit = 0;
    bool isJson = false;
};

void appendPorts(std::string& out, const BlockNode& node) {
    appendJsonArray(out, node.ports, [&](const PortNode& port) {
        JsonObject object(out);
        object.number("port", port.port).text("portName", port.name).truth("observed", port.isObserved).close();
    });
}

void appendItems(std::string& out, const BlockNode& node) {
    appendJsonArray(out, node.items, [&](const ItemNode& item) {
        JsonObject object(out);
        object.text("item", item.item.subPath).text("domain", item.item.domainType).number("ssid", item.item.ssid);
        object.truth("observed", item.isObserved).name("activities");
        appendJsonTexts(out, item.activities);
        object.close();
    });
}

void appendShownBlock(std::string& out, const kestrel::Model& model, const BlockNode& node) {
    JsonObject object(out);
    object.text("block", model.fullPath(*node.block)).text("eid", std::string_view(node.block->eid)).name("outputs");
    appendPorts(out, node);
    if (node.block->chart) {
        object.name("chart");
        appendItems(out, node);
    }
    object.truth("badge", node.hasBadge).close();
}

void addShown(const ShownModel& shown, JsonMembers& json) {
    const Session& session = *shown.session;
    const SignalUuids uuids(session);
    std::vector<const BlockNode*> blocks;
    for (const BlockNode& node : shown.blocks)
        if (node.block != nullptr) blocks.push_back(&node);
    json.object().text("model", session.model().name());
    listUnsettled(json, session);
    json.list("signals", shown.signals, [&](std::size_t i) {
        JsonObject object(json.text());
        appendSignal(object, session, i);
        object.close();
    });
    json.list("blocks", blocks, [&](const BlockNode* node) { appendShownBlock(json.text(), session.model(), *node); });
    json.list("clients", shown.clients, [&](std::size_t i) {
        JsonObject object(json.text());
        appendClient(object, *session.clients().get(i), i, session, uuids);
        object.close();
    });
    json.object().name("leftOut");
    JsonObject leftOut(json.text());
    for (const Share& share : sharesOf(shown)) leftOut.number(share.key, share.all - share.shown);
    leftOut.close();
}

bool isShown(const std::u16string& path, const std::u16string& below) {
    return below.empty() || isAtOrBelow(path, below);
}

// The blocks that the options ask for.
std::vector<BlockNode> shownBlocks(const Session& session, const ShowArguments& arguments,
                                   const std::u16string& below) {
    std::vector<BlockNode> nodes = blockTree(session);
    if (arguments.isObservedOnly) keepObserved(nodes);
    const auto isWanted = [&](const BlockNode& node) {
        if (node.block == nullptr || !isShown(node.block->path, below)) return false;
        return !arguments.isObservedOnly || !node.ports.empty() || !node.items.empty();
    };
    if (arguments.isObservedOnly || !below.empty()) keepWanted(nodes, isWanted);
    return nodes;
}

ShownModel shownOf(const Session& session, const ShowArguments& arguments) {
    ShownModel shown{&session, {}, {}, {}};
    const std::u16string below = resolveBelow(session.model(), arguments.below);
    const SignalUuids uuids(session);
    shown.signals = positionsWhere(session.signals(), [&](const ks_hmi::SignalSpecification& signal) {
        return isShown(sourceOf(session.model(), signal).block->path, below);
    });
    shown.clients = positionsWhere(session.clients(), [&](const ks_hmi::SignalClient& client) {
        const std::optional<std::size_t> signal = uuids.positionOf(client.m_signalUUID);
        return below.empty() || (signal && std::ranges::binary_search(shown.signals, *signal));
    });
    shown.blocks = shownBlocks(session, arguments, below);
    return shown;
}

void narrowBlocks(const std::vector<SignalSource>& sources, std::vector<BlockNode>& nodes) {
    std::set<SourceKey> wanted;
    for (const SignalSource& source : sources) wanted.insert(keyOf(source));
    for (BlockNode& node : nodes) {
        std::erase_if(node.ports, [&](const PortNode& one) {
            return !wanted.contains(keyOf({node.block, one.port, std::nullopt}));
        });
        std::erase_if(node.items, [&](const ItemNode& one) {
            return !wanted.contains(keyOf({node.block, 0, one.item}));
        });
    }
    keepWanted(nodes, [](const BlockNode& node) { return !node.ports.empty() || !node.items.empty(); });
}

// Leaves what is selected: ports and items with their signals and clients.
void narrow(const SelectionArguments& what, const Output& output, ShownModel& shown) {
    const Session& session = *shown.session;
    const std::vector<SignalSource> sources = selectOrAll(session.model(), what, output).sources();
    const SignalIndex index(session);
    std::set<std::size_t> signals;
    for (const SignalSource& source : sources)
        for (const std::size_t position : index.on(source, what.selection.options)) signals.insert(position);
    std::erase_if(shown.signals, [&](std::size_t position) { return !signals.contains(position); });
    const SignalUuids uuids(session);
    std::erase_if(shown.clients, [&](std::size_t position) {
        const auto signal = uuids.positionOf(session.clients().get(position)->m_signalUUID);
        return !signal || !signals.contains(*signal);
    });
    narrowBlocks(sources, shown.blocks);
}

// The first of each kind.
void cut(ShownModel& shown, std::size_t limit) {
    shown.signals.resize(std::min(shown.signals.size(), limit));
    shown.clients.resize(std::min(shown.clients.size(), limit));
    std::size_t blocks = 0;
    const auto isOver = [&](const BlockNode& node) { return node.block != nullptr && ++blocks > limit; };
    shown.blocks.erase(std::find_if(shown.blocks.begin(), shown.blocks.end(), isOver), shown.blocks.end());
    keepFirst(shown.blocks, limit);
}

std::string filtersOf(const ShowArguments& arguments) {
    std::vector<std::string> filters;
    if (isNarrowed(arguments.what)) filters.emplace_back("the selection");
    if (!arguments.below.empty()) filters.emplace_back("--below");
    if (arguments.isObservedOnly) filters.emplace_back("--observed");
    if (arguments.limit > 0) filters.emplace_back("--limit");
    return fmt::format("{}", fmt::join(filters, ", "));
}

int showFile(const ShowArguments& arguments, const std::string& file, JsonMembers* json, const Output& output) {
    const Session session(file);
    noticeNames(session, output.err);
    noticeUnconfirmed(session, output.err);
    ShownModel shown = shownOf(session, arguments);
    if (isNarrowed(arguments.what)) narrow(arguments.what, output, shown);
    if (arguments.limit > 0) cut(shown, arguments.limit);
    shown.leftOutFor = filtersOf(arguments);
    json ? addShown(shown, *json) : printShown(shown, output);
    return kSuccess;
}

void requireSense(const ShowArguments& arguments) { requireApplicable(arguments.what, false); }

}  // namespace

void addShow(CLI::App& app, Run& run) {
    const auto arguments = std::make_shared<ShowArguments>();
    CLI::App* const command =
        addLookingCommand(app, "show", "List a model's signals, its clients, and its blocks with what is observed",
                          "  kshmi show cruise.json\n"
                          "  kshmi show cruise.json Sensors/Speed --all '*:valid'\n"
                          "  kshmi show cruise.json --below Sensors --observed\n"
                          "  kshmi show cruise.json --limit 10 --json\n"
                          "  kshmi show cruise.json plant.json --observed",
                          arguments->file);
    addSelection(*command, arguments->what);
    command->add_option("--below", arguments->below, "only at and below this path")->type_name("PATH");
    command->add_flag("--observed", arguments->isObservedOnly, "only ports, chart items and blocks that are observed");
    command
        ->add_option("--limit", arguments->limit,
                     "only the first so many signals, clients, blocks, and ports of a block")
        ->type_name("COUNT")
        ->transform(wholeNumber(1));
    command->add_flag("--json", arguments->isJson, "print JSON");
    runOnFiles(*command, showFile, arguments, run, requireSense);
}

}  // namespace kshmi
