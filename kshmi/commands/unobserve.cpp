#include <algorithm>
#include <set>

#include "kshmi/commands/command_options.h"
#include "kshmi/commands/commands.h"
#include "kshmi/commands/selecting.h"
#include "kshmi/print/change_report.h"
#include "signals/signal_specification.h"
#include "workbench/change/observing.h"
#include "workbench/find/client_names.h"
#include "workbench/find/signal_index.h"
#include "workbench/find/watching.h"
#include "workbench/text/error.h"
#include "workbench/text/text.h"

namespace kshmi {

namespace {

using namespace workbench;

struct UnobserveArguments {
    std::string file;
    Selection selection;
    std::vector<std::string> types;
    std::vector<std::string> uuids;
    bool isDangling = false;
    bool isUnused = false;  ///< the host is asked which ones it does not need
    bool isDryRun = false;
};

bool contains(const std::vector<std::string>& texts, const std::string& text) {
    return std::find(texts.begin(), texts.end(), text) != texts.end();
}

/// Finds the clients that a selection means.
class Selector {
public:
    Selector(const Session& session, const UnobserveArguments& arguments)
        : m_session(session), m_arguments(arguments), m_uuids(session) {}

    Positions positions(const Output& output) {
        const Selection& selection = m_arguments.selection;
        const bool isTypeOnly = selection.references.empty() && selection.all.empty() && m_arguments.uuids.empty() &&
                                !m_arguments.isDangling;
        noteReferences();
        notePatterns(output);
        Positions positions;
        for (std::size_t i = 0; i < m_session.clients().getCount(); ++i) {
            const ks_hmi::SignalClient& client = *m_session.clients().get(i);
            const bool isOfType = m_arguments.types.empty() || contains(m_arguments.types, client.m_observerType);
            if (isOfType && (isTypeOnly || isSelected(client))) positions.push_back(i);
        }
        return positions;
    }

    std::string describe(std::size_t position) const { return describeClient(m_session, position, m_uuids); }

private:
    bool isSelected(const ks_hmi::SignalClient& client) const {
        return m_signals.contains(client.m_signalUUID) || contains(m_arguments.uuids, client.m_uuid) ||
               (m_arguments.isDangling && watched(client, m_uuids) == Watched::gone);
    }

    bool isObserved(const std::string& signalUuid) const {
        for (std::size_t i = 0; i < m_session.clients().getCount(); ++i)
            if (m_session.clients().get(i)->m_signalUUID == signalUuid) return true;
        return false;
    }

    void noteReferences() {
        if (m_arguments.selection.references.empty()) return;
        const SignalIndex index(m_session);
        for (const std::string& reference : m_arguments.selection.references) {
            bool isAnyObserved = false;
            for (const std::size_t position : index.on(reference, m_arguments.selection.options)) {
                const std::string& uuid = m_session.signals().get(position)->m_uuid;
                m_signals.insert(uuid);
                isAnyObserved = isAnyObserved || isObserved(uuid);
            }
            if (!isAnyObserved) throw Error(inQuotes(reference) + ": has no client; \"kshmi clients\" lists them");
        }
    }

    void notePatterns(const Output& output) {
        const Selection& selection = m_arguments.selection;
        const SignalIndex index(m_session);
        for (const SignalSource& source :
             matchingSources(m_session.model(), selection, Selectable::portsAndItems, output))
            for (const std::size_t position : index.on(source, selection.options))
                m_signals.insert(m_session.signals().get(position)->m_uuid);
    }

    const Session& m_session;
    const UnobserveArguments& m_arguments;
    SignalUuids m_uuids;
    std::set<std::string> m_signals;
};

/// A client must have each of the texts in that field.
void requireAll(const Session& session, const std::vector<std::string>& texts, std::string ks_hmi::SignalClient::*field,
                const char* what) {
    for (const std::string& text : texts) {
        std::size_t i = 0;
        while (i < session.clients().getCount() && session.clients().get(i)->*field != text) ++i;
        if (i == session.clients().getCount())
            throw Error(std::string("no client has the ") + what + " " + inQuotes(text) + "; \"kshmi clients " +
                        session.path() + " --json\" lists them");
    }
}

/// The host drops what it does not need; what is gone afterwards is told.
void removeUnused(Session& session, const Selector& selector, ChangeReport& report) {
    std::vector<std::pair<std::string, std::string>> before;
    for (std::size_t i = 0; i < session.clients().getCount(); ++i)
        before.emplace_back(session.clients().get(i)->m_uuid, selector.describe(i));
    ks_hmi::StreamingClients::validateAndRemoveUnused(session.clientSet());
    std::set<std::string> kept;
    for (std::size_t i = 0; i < session.clients().getCount(); ++i) kept.insert(session.clients().get(i)->m_uuid);
    for (const auto& [uuid, description] : before)
        if (!kept.contains(uuid)) report.change("drop", "dropped", description);
}

void requireSomething(const UnobserveArguments& arguments) {
    const Selection& selection = arguments.selection;
    const bool isAnything = !selection.references.empty() || !selection.all.empty() || !arguments.types.empty() ||
                            !arguments.uuids.empty() || arguments.isDangling;
    if (arguments.isUnused && isAnything) throw Error("--unused asks the host about all clients; give it alone");
    if (!isAnything && !arguments.isUnused)
        throw Error("nothing to work on; name a REF, or give --type, --uuid, --all, --dangling or --unused");
    requireApplicable(selection);
}

int runUnobserve(const UnobserveArguments& arguments, const Output& output) {
    requireSomething(arguments);
    kshmi::enterHost(output.err);
    Session session(arguments.file);
    requireAll(session, arguments.uuids, &ks_hmi::SignalClient::m_uuid, "UUID");
    requireAll(session, arguments.types, &ks_hmi::SignalClient::m_observerType, "type");
    Selector selector(session, arguments);
    ChangeReport report(output, arguments.isDryRun);
    if (arguments.isUnused) {
        removeUnused(session, selector, report);
    } else {
        Positions positions = selector.positions(output);
        for (const std::size_t position : positions) report.change("remove", "removed", selector.describe(position));
        removeClients(session, std::move(positions));
    }
    report.finish(session);
    return kSuccess;
}

}  // namespace

void addUnobserve(CLI::App& app, Run& run) {
    const auto arguments = std::make_shared<UnobserveArguments>();
    CLI::App* const command =
        addCommand(app, "unobserve", "Remove observers and save the model; --type narrows what else is selected",
                   "  kshmi unobserve cruise.json Sensors/Speed:1 --type ks_scope_observer\n"
                   "  kshmi unobserve cruise.json --all 'cruise/Plant/*'\n"
                   "  kshmi unobserve cruise.json --dangling\n"
                   "  kshmi unobserve cruise.json --unused --dry-run",
                   arguments->file);
    addReferences(*command, arguments->selection.references);
    addPatterns(*command, arguments->selection);
    addReferenceOptions(*command, arguments->selection.options);
    command->add_option("--type", arguments->types, "observers of this kind; may be repeated")->allow_extra_args(false);
    command->add_option("--uuid", arguments->uuids, "the observer with this UUID; may be repeated")
        ->allow_extra_args(false);
    command->add_flag("--dangling", arguments->isDangling, "observers whose signal is gone");
    command->add_flag("--unused", arguments->isUnused,
                      "what the host does not need: observers of deprecated kinds and those whose signal is gone");
    addDryRun(*command, arguments->isDryRun);
    runWith(*command, runUnobserve, arguments, run);
}

}  // namespace kshmi
