#include <set>
#include <utility>

#include "kshmi/commands/command_options.h"
#include "kshmi/commands/commands.h"
#include "kshmi/commands/selecting.h"
#include "kshmi/print/change_report.h"
#include "kshmi/print/json_records.h"
#include "workbench/change/observing.h"
#include "workbench/find/client_names.h"
#include "workbench/find/selecting_clients.h"
#include "workbench/find/watching.h"
#include "workbench/session/records.h"
#include "workbench/text/error.h"

namespace kshmi {

namespace {

using namespace workbench;

struct UnobserveArguments {
    std::string file;
    SelectionArguments what;
    ClientSelection clients;
    bool isUnused = false;  // the host is asked which ones it does not need
    ChangeOptions options;
};

// Clients as they are before some go.
class Leaving {
public:
    Leaving(const Session& session, ChangeReport& report) : m_session(session), m_report(report), m_uuids(session) {
        for (std::size_t i = 0; i < session.clients().getCount(); ++i)
            m_clients.emplace_back(session.clients().share(i), describeClient(session, i, m_uuids));
    }

    void tell(std::size_t position, const char* infinitive, const char* past) const {
        const auto& client = m_clients[position].first;
        const std::string& description = m_clients[position].second;
        m_report.change(Fate::removed, infinitive, past, description, [&](JsonObject& object) {
            object.text("kind", std::string_view("client"));
            appendClient(object, *client, position, m_session, m_uuids);
        });
    }

    // Tells of those that are gone.
    void tellDropped() const {
        std::set<std::string> kept;
        for (const ks_hmi::SignalClient& client : recordsOf(m_session.clients())) kept.insert(client.m_uuid);
        for (std::size_t i = 0; i < m_clients.size(); ++i)
            if (!kept.contains(m_clients[i].first->m_uuid)) tell(i, "drop", "dropped");
    }

private:
    const Session& m_session;
    ChangeReport& m_report;
    SignalUuids m_uuids;
    std::vector<std::pair<ks_hmi::StreamingClients::ClientPtr, std::string>> m_clients;
};

void requireSense(const UnobserveArguments& arguments) {
    const bool isGiven = arguments.clients.isAnything() || !arguments.clients.types.empty();
    if (arguments.isUnused && (isGiven || isAnythingSelected(arguments.what)))
        throw Error("--unused asks the host about all clients; give it alone");
    requireSelection(arguments.what, isGiven || arguments.isUnused, "--client, --type, --state, --unused");
}

int runUnobserve(const UnobserveArguments& arguments, const Output& output) {
    requireSense(arguments);
    kshmi::enterHost(output.err);
    Session session(arguments.file);
    ChangeReport report(output, "unobserve", arguments.options);
    const Leaving leaving(session, report);
    if (arguments.isUnused) {
        ks_hmi::StreamingClients::validateAndRemoveUnused(session.clientSet());
        leaving.tellDropped();
    } else {
        Positions positions = selectedClients(session, arguments.what, arguments.clients, output);
        for (const std::size_t position : positions) leaving.tell(position, "remove", "removed");
        removeClients(session, std::move(positions));
    }
    return report.finish(session);
}

}  // namespace

void addUnobserve(CLI::App& app, Run& run) {
    const auto arguments = std::make_shared<UnobserveArguments>();
    CLI::App* const command =
        addCommand(app, "unobserve", "Remove clients and save the model; --type narrows what else is selected",
                   "  kshmi unobserve cruise.json Sensors/Speed:1 --type ks_scope_observer\n"
                   "  kshmi unobserve cruise.json --all 'Plant/*'\n"
                   "  kshmi unobserve cruise.json --client 3\n"
                   "  kshmi unobserve cruise.json --state foreign --state dangling\n"
                   "  kshmi unobserve cruise.json --unused --dry-run",
                   arguments->file);
    addSelection(*command, arguments->what);
    addClientSelection(*command, arguments->clients);
    command->add_flag("--unused", arguments->isUnused,
                      "what the host does not need: clients of deprecated kinds and those whose signal is gone");
    addChangeOptions(*command, arguments->options);
    runWith(*command, runUnobserve, arguments, run);
}

}  // namespace kshmi
