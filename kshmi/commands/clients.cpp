#include <fmt/format.h>

#include "kshmi/commands/command_options.h"
#include "kshmi/commands/commands.h"
#include "kshmi/print/json_lines.h"
#include "kshmi/print/text_table.h"
#include "workbench/change/observing.h"
#include "workbench/find/client_names.h"
#include "workbench/find/watching.h"
#include "workbench/json/json_object.h"
#include "workbench/text/text.h"

namespace kshmi {

namespace {

using namespace workbench;

struct ClientsArguments {
    std::string file;
    bool isJson = false;
};

using ks_hmi::SignalClient;
using ks_hmi::StreamingClients;

/// A client with what the library answers for it.
struct Answer {
    std::size_t position = 0;  ///< 0-based, in the set
    StreamingClients::ClientPtr client;
    std::vector<std::u16string> path;
    std::u16string subPath;
    std::u16string activity;  ///< of a chart item
    int port = 0;
    int decimation = 1;
    int maxPoints = 0;
    Watched target = Watched::here;
};

std::vector<Answer> answersOf(Session& session) {
    // Ports are known of signals that are bound.
    session.signals().applyRebindingRules(session.signalSet(), true);
    const std::u16string& model = session.model().name();
    const SignalUuids uuids(session);
    std::vector<Answer> answers;
    for (const StreamingClients::ClientPtr& client : alignedClients(session)) {
        Answer answer;
        answer.position = answers.size();
        answer.client = client;
        client->getAlignedBlockPath(model, answer.path, answer.subPath);
        answer.port = client->getAlignedPortIndex(model);
        answer.decimation = client->getDecimation(model);
        answer.maxPoints = client->getMaxPoints(model);
        answer.target = watched(*client, uuids);
        if (const auto signal = uuids.positionOf(client->m_signalUUID))
            answer.activity = activityOf(*session.signals().get(*signal));
        answers.push_back(std::move(answer));
    }
    return answers;
}

/// The block with port or item, behind the blocks on the way there unless they are that very block.
std::string whereabouts(const Answer& answer) {
    if (answer.path.empty()) return "signal " + inQuotes(std::string_view(answer.client->m_signalUUID));
    std::string text;
    for (std::size_t i = 0; i + 1 < answer.path.size(); ++i)
        if (answer.path[i] != answer.path[i + 1]) text += printable(answer.path[i]) + " > ";
    text += printable(answer.path.back());
    if (!answer.subPath.empty()) text += "/" + printable(answer.subPath);
    if (!answer.activity.empty()) text += " (" + printable(answer.activity) + ")";
    return answer.port > 0 ? fmt::format("{}:{}", text, answer.port) : text;
}

void printText(const Session& session, const std::vector<Answer>& answers, const Output& output) {
    constexpr auto kRight = TextTable::Align::right;
    output.out << fmt::format("model {}: {}\n", printable(session.model().name()),
                              counted(session.clients().getCount(), "client"));
    if (answers.empty()) return;
    TextTable table({{"#", kRight},
                     {"TYPE"},
                     {"WATCHES"},
                     {"RATE", kRight},
                     {"CHANNEL", kRight},
                     {"DECIMATION", kRight},
                     {"MAX POINTS", kRight},
                     {"NOTES"}});
    for (const Answer& answer : answers) {
        const SignalClient& client = *answer.client;
        table.add({std::to_string(answer.position + 1), printable(std::string_view(client.m_observerType)),
                   whereabouts(answer), std::to_string(static_cast<std::uint32_t>(client.m_updateRate)),
                   std::to_string(static_cast<std::uint32_t>(client.m_dimensionChannel)),
                   std::to_string(answer.decimation), std::to_string(answer.maxPoints),
                   notesOn(client, answer.target)});
    }
    output.out << '\n';
    table.print(output.out, output.width);
}

void appendAnswer(std::string& out, const Answer& answer) {
    const SignalClient& client = *answer.client;
    JsonObject object(out);
    object.number("position", answer.position + 1).text("uuid", std::string_view(client.m_uuid));
    object.text("type", std::string_view(client.m_observerType)).name("path");
    appendJsonArray(out, answer.path, [&](std::u16string_view path) { appendJsonText(out, path); });
    object.text("subPath", answer.subPath).number("port", answer.port);
    object.text("activity", answer.activity).number("decimation", answer.decimation);
    object.number("maxPoints", answer.maxPoints);
    object.text("signalUuid", std::string_view(client.m_signalUUID)).text("sourceModel", client.m_sourceModel);
    object.number("updateRate", static_cast<std::uint32_t>(client.m_updateRate));
    object.number("channel", static_cast<std::uint32_t>(client.m_dimensionChannel));
    object.truth("imaginary", client.m_observeImaginaryPart).text("busLeaf", std::string_view(client.m_busLeafPath));
    object.truth("dangling", answer.target == Watched::gone).truth("deprecated", client.isDeprecatedObserver());
    object.close();
}

int runClients(const ClientsArguments& arguments, const Output& output) {
    kshmi::enterHost(output.err);
    Session session(arguments.file);
    const std::vector<Answer> answers = answersOf(session);
    arguments.isJson ? printJsonLines(output.out, answers, appendAnswer) : printText(session, answers, output);
    return kSuccess;
}

}  // namespace

void addClients(CLI::App& app, Run& run) {
    const auto arguments = std::make_shared<ClientsArguments>();
    CLI::App* const command =
        addCommand(app, "clients", "List a model's observers with what they watch, as the host finds it now",
                   "  kshmi clients cruise.json\n  kshmi clients cruise.json --json", arguments->file);
    command->add_flag("--json", arguments->isJson, "print JSON");
    runWith(*command, runClients, arguments, run);
}

}  // namespace kshmi
