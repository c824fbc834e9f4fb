#include "kshmi/tour/tour.h"
#include "memory_host/kestrel/host_side.h"
#include "observers/hmi_engine_utils.h"
#include "observers/model_observers.h"
#include "workbench/change/observing.h"
#include "workbench/change/renaming.h"
#include "workbench/find/client_names.h"
#include "workbench/find/watching.h"
#include "workbench/session/records.h"
#include "workbench/session/script.h"
#include "workbench/text/text.h"

namespace kshmi {

using namespace workbench;

namespace {

using ks_hmi::StreamingClients;

std::string joined(const std::vector<std::u16string>& path) {
    std::string text;
    for (const std::u16string& element : path) text += (text.empty() ? "" : " > ") + printable(element);
    return text.empty() ? "nowhere" : text;
}

}  // namespace

void Tour::observeFirst(const char* type) {
    ClientSettings settings;
    settings.type = type;
    addClient(*m_session, 0, settings);
    const std::size_t position = m_session->clients().getCount() - 1;
    say("{}", describeClient(*m_session, position, SignalUuids(*m_session)));
}

void Tour::addClients() {
    title("Observers join");
    if (m_session->signals().getCount() == 0) return say("there is no signal to watch");
    observeFirst("ks_scope_observer");
    observeFirst("hmi_web_widget_observer");
    say("the set holds {}, in its saved form {} with {} fields",
        counted(script::count(m_session->clientSet()), "client"),
        counted(hvGetNumberOfElements(script::persistence(m_session->clientSet()).get()), "element"),
        ks_hmi::SignalClient::getNumStructFields());
}

void Tour::askClients() {
    title("Who watches what?");
    m_session->signals().applyRebindingRules(m_session->signalSet(), true);
    const std::vector<StreamingClients::ClientPtr> aligned = alignedClients(*m_session);
    if (aligned.empty()) say("nobody watches anything");
    const std::u16string& model = m_session->model().name();
    for (const StreamingClients::ClientPtr& client : aligned) {
        std::vector<std::u16string> path;
        std::u16string subPath;
        client->getAlignedBlockPath(model, path, subPath);
        say("{}: {}{}{}, port {}, decimation {}, maximum points {}",
            printable(std::string_view(client->m_observerType)), joined(path), subPath.empty() ? "" : "/",
            printable(subPath), client->getAlignedPortIndex(model), client->getDecimation(model),
            client->getMaxPoints(model));
    }
}

void Tour::renameTwice() {
    title("The model is renamed twice, with no validation in between");
    m_nameBefore = m_session->model().name();
    for (const char16_t* const suffix : {u"_draft", u"_final"}) {
        const std::u16string before = m_session->model().name();
        const std::vector<std::string> received = renameModel(*m_session, m_nameBefore + suffix).received;
        say("{} is now {}; any port observed: {}", printable(before), printable(m_session->model().name()),
            m_session->signals().isAnyPortObserved());
        for (const std::string& line : received) say("the interface manager received {}", line);
    }
}

void Tour::bundle() {
    title("Signals and observers travel as one value");
    const HvArrayPtr bundle =
        ks_hmi::ModelObservers::createFromSignalsAndClients(m_session->signalSet(), m_session->clientSet());
    HvArrayPtr signals;
    HvArrayPtr clients;
    ks_hmi::ModelObservers(bundle.get()).getSignalsAndClients(signals, clients);
    say("bundled in a {}", hvGetClassName(bundle.get()));
    say("split again: {} and {}", counted(script::count(signals.get()), "signal"),
        counted(script::count(clients.get()), "client"));
}

void Tour::notice() {
    title("Parameters of a block change");
    if (m_session->model().blocks().empty()) return say("the model has no blocks");
    const std::size_t before = kestrel::recordedEvents().size();
    ks_hmi::HMIEngineUtils::updateParamsForBlock(m_session->model().fullPath(m_session->model().blocks().front()));
    for (std::size_t i = before; i < kestrel::recordedEvents().size(); ++i)
        say("the dashboard layer received {} for {}", printable(kestrel::recordedEvents()[i].event),
            printable(kestrel::recordedEvents()[i].path));
}

void Tour::validate() {
    title("Validation drops what is deprecated and what is dangling");
    const SignalUuids uuids(*m_session);
    for (const auto& [position, client] : numbered(std::as_const(*m_session).clients()))
        if (watched(client, uuids) == Watched::gone || client.isDeprecatedObserver())
            say("{}: {}", describeClient(*m_session, position, uuids),
                notesOn(client, uuids, m_session->model().name()));
    const std::size_t before = m_session->clients().getCount();
    StreamingClients::validateAndRemoveUnused(m_session->clientSet());
    say("of {}, {} are left", counted(before, "client"), m_session->clients().getCount());
    for (const std::string& line : renameModel(*m_session, m_nameBefore).received)
        say("renamed back, the interface manager received {}", line);
}

}  // namespace kshmi
