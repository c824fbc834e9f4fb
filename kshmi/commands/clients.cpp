#include <fmt/format.h>

#include <algorithm>

#include "kshmi/commands/command_options.h"
#include "kshmi/commands/commands.h"
#include "kshmi/commands/selecting.h"
#include "kshmi/commands/several_files.h"
#include "kshmi/print/json/json_records.h"
#include "kshmi/print/reports/name_notice.h"
#include "kshmi/print/settings_text.h"
#include "kshmi/print/text_table.h"
#include "workbench/change/observing.h"
#include "workbench/find/client_names.h"
#include "workbench/find/selecting_clients.h"
#include "workbench/find/watching.h"
#include "workbench/json/json_text.h"
#include "workbench/text/text.h"

namespace kshmi {

namespace {

using namespace workbench;

struct ClientsArguments {
    std::string file;
    SelectionArguments what;
    ClientSelection clients;
    bool isJson = false;
};

using ks_hmi::SignalClient;
using ks_hmi::StreamingClients;

// A client with what the library answers for it.
struct ClientAnswer {
    std::size_t position = 0;  // 0-based, in the set
    StreamingClients::ClientPtr client;
    std::vector<std::u16string> path;
    std::u16string subPath;
    std::u16string activity;  // of a chart item
    int port = 0;
    int decimation = 1;
    int maxPoints = 0;
    std::string notes;
};

std::vector<ClientAnswer> answersOf(Session& session) {
    // Ports are known of signals that are bound.
    session.signals().applyRebindingRules(session.signalSet(), true);
    const std::u16string& model = session.model().name();
    const SignalUuids uuids(session);
    std::vector<ClientAnswer> answers;
    for (const StreamingClients::ClientPtr& client : alignedClients(session)) {
        ClientAnswer answer;
        answer.position = answers.size();
        answer.client = client;
        client->getAlignedBlockPath(model, answer.path, answer.subPath);
        answer.port = client->getAlignedPortIndex(model);
        answer.decimation = client->getDecimation(model);
        answer.maxPoints = client->getMaxPoints(model);
        answer.notes = notesOn(*client, uuids, model);
        if (const auto signal = uuids.positionOf(client->m_signalUUID))
            answer.activity = activityOf(*session.signals().get(*signal));
        answers.push_back(std::move(answer));
    }
    return answers;
}

// The block with port or item, behind the blocks on the way there unless they are that very block.
std::string whereabouts(const ClientAnswer& answer) {
    if (answer.path.empty()) return "signal " + inQuotes(std::string_view(answer.client->m_signalUUID));
    std::string text;
    for (std::size_t i = 0; i + 1 < answer.path.size(); ++i)
        if (answer.path[i] != answer.path[i + 1]) text += printable(answer.path[i]) + " > ";
    text += printable(answer.path.back());
    if (!answer.subPath.empty()) text += "/" + printable(answer.subPath);
    if (!answer.activity.empty()) text += fmt::format(" ({})", printable(answer.activity));
    return answer.port > 0 ? fmt::format("{}:{}", text, answer.port) : text;
}

// What is not as it is when nothing is said, of the client and of its signal.
std::string settingsText(const ClientAnswer& answer) {
    std::vector<std::string> settings;
    const auto channel = static_cast<std::uint32_t>(answer.client->m_dimensionChannel);
    if (channel != 1) settings.push_back(fmt::format("channel {}", channel));
    if (std::string ofSignal = kshmi::settingsText(answer.decimation, answer.maxPoints, {}, {}); !ofSignal.empty())
        settings.push_back(std::move(ofSignal));
    return listed(settings);
}

void printText(const Session& session, const std::vector<ClientAnswer>& answers, const Output& output) {
    constexpr auto kRight = TextTable::Align::right;
    output.out << fmt::format("model {}: {}\n", printable(session.model().name()), counted(answers.size(), "client"));
    if (answers.empty()) return;
    TextTable table({{"#", kRight}, {"TYPE"}, {"WATCHES"}, {"RATE", kRight}, {"SETTINGS"}, {"NOTES"}});
    for (const ClientAnswer& answer : answers) {
        const SignalClient& client = *answer.client;
        table.add({std::to_string(answer.position + 1), printable(std::string_view(client.m_observerType)),
                   whereabouts(answer), std::to_string(static_cast<std::uint32_t>(client.m_updateRate)),
                   settingsText(answer), answer.notes});
    }
    output.out << '\n';
    table.print(output.out, output.width);
}

void addClientAnswers(const Session& session, const std::vector<ClientAnswer>& answers, JsonMembers& json) {
    const SignalUuids uuids(session);
    json.object().text("model", session.model().name());
    listUnsettled(json, session);
    json.list("clients", answers, [&](const ClientAnswer& answer) {
        JsonObject object(json.text());
        appendClient(object, *answer.client, answer.position, session, uuids);
        object.name("path");
        appendJsonArray(json.text(), answer.path, [&](std::u16string_view path) { appendJsonText(json.text(), path); });
        if (!answer.path.empty()) object.text("block", answer.path.back());
        if (answer.port > 0) object.number("port", answer.port);
        if (!answer.activity.empty()) object.text("item", answer.subPath).text("activity", answer.activity);
        object.number("decimation", answer.decimation).number("maxPoints", answer.maxPoints).close();
    });
}

// Leaves the clients that are selected.
void narrow(const Session& session, const ClientsArguments& arguments, const Output& output,
            std::vector<ClientAnswer>& answers) {
    const Positions positions = selectedClients(session, arguments.what, arguments.clients, output);
    std::erase_if(answers, [&](const ClientAnswer& answer) {
        return !std::binary_search(positions.begin(), positions.end(), answer.position);
    });
}

int listClients(const ClientsArguments& arguments, const std::string& file, JsonMembers* json, const Output& output) {
    const bool isGiven = arguments.clients.isAnything() || !arguments.clients.types.empty();
    Session session(file);
    noticeNames(session, output.err);
    std::vector<ClientAnswer> answers = answersOf(session);
    if (isGiven || isAnythingSelected(arguments.what)) narrow(session, arguments, output, answers);
    json ? addClientAnswers(session, answers, *json) : printText(session, answers, output);
    return kSuccess;
}

void requireSense(const ClientsArguments& arguments) { requireSelection(arguments.what, true); }

}  // namespace

void addClients(CLI::App& app, Run& run) {
    const auto arguments = std::make_shared<ClientsArguments>();
    CLI::App* const command =
        addLookingCommand(app, "clients", "List a model's clients with what they watch, as the host finds it now",
                          "  kshmi clients cruise.json\n  kshmi clients cruise.json --state foreign --json\n"
                          "  kshmi clients cruise.json Sensors/Speed:1\n  kshmi clients cruise.json plant.json",
                          arguments->file);
    addSelection(*command, arguments->what);
    addClientSelection(*command, arguments->clients);
    command->add_flag("--json", arguments->isJson, "print JSON");
    runOnFiles(*command, listClients, arguments, run, requireSense);
}

}  // namespace kshmi
