#include "workbench/change/observing.h"

#include <fmt/format.h>

#include <algorithm>
#include <functional>
#include <unordered_set>
#include <utility>

#include "signals/signal_specification.h"
#include "workbench/change/all_or_none.h"
#include "workbench/find/client_names.h"
#include "workbench/find/signal_index.h"
#include "workbench/find/watching.h"
#include "workbench/session/records.h"
#include "workbench/session/script.h"
#include "workbench/text/error.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

using ks_hmi::SignalClient;
using ks_hmi::SignalSpecification;

void apply(const ClientSettings& settings, SignalClient& client) {
    if (settings.type) client.m_observerType = *settings.type;
    if (settings.params) client.m_observerParams.reset(hvCreateDeepCopy(settings.params.get()));
    if (settings.updateRate) client.m_updateRate = *settings.updateRate;
    if (settings.channel) client.m_dimensionChannel = *settings.channel;
    if (settings.isImaginary) client.m_observeImaginaryPart = *settings.isImaginary;
    if (settings.busLeaf) client.m_busLeafPath = *settings.busLeaf;
}

// Of a chart item's signals, the first on the activity that is meant when none is said. When there is none, the first
// of all, if they agree on another.
std::size_t signalOnItem(const Session& session, const SignalSource& source, const Positions& found) {
    std::vector<std::u16string> activities;
    for (const std::size_t position : found) {
        std::u16string activity = activityOf(*session.signals().get(position));
        if (activity == defaultActivity(*source.item)) return position;
        if (std::ranges::find(activities, activity) == activities.end()) activities.push_back(std::move(activity));
    }
    if (activities.size() == 1) return found.front();
    const std::string list = listed(activities, activities.size(), [](const auto& one) { return printable(one); });
    throw Error(fmt::format("{}: several activities are marked; say which activity: {}",
                            inQuotes(fullName(session.model(), source)), list));
}

void requireMarked(const NamedSources& named, const ReferenceOptions& options, const SignalIndex& index) {
    const bool isMarked = std::ranges::any_of(
        named.sources, [&](const SignalSource& source) { return !index.on(source, options).empty(); });
    if (isMarked || named.sources.empty()) return;
    const Error error(inQuotes(named.reference.text) + ": is not marked; mark it first");
    throw named.reference.place.file.empty() ? error : error.at(named.reference.place);
}

}  // namespace

bool ClientSettings::isAny() const noexcept {
    return type || params || updateRate || channel || isImaginary || busLeaf;
}

void addClient(Session& session, std::size_t signal, const ClientSettings& settings) {
    const std::u16string& modelName = session.model().name();
    const SignalSpecification& observed = *session.signals().get(signal);
    SignalClient client;
    client.m_uuid = SignalSpecification::getUUIDFromBlockHandle(0, 0.0, /*useMap=*/false);
    client.m_sourceModel = modelName;
    client.m_signalUUID = observed.m_uuid;
    client.m_modelPath = {sourceOf(session.model(), observed).block->path};
    client.m_modelPathEID = {observed.m_eid};
    apply(settings, client);
    const HvArrayPtr object = client.getHOSObject(modelName);
    if (!object) throw Error(nameOfSignal(session, signal) + ": the host made no object for a client", ErrorCode::host);
    script::add(session.clientSet(), object.get());
}

Positions addClients(Session& session, const Positions& signals, const ClientSettings& settings) {
    const std::size_t before = session.clients().getCount();
    const auto added = [&] { return positionsBetween(before, session.clients().getCount()); };
    allOrNone(
        [&] {
            for (const std::size_t signal : signals) addClient(session, signal, settings);
        },
        [&] { removeClients(session, added()); });
    return added();
}

Positions signalsToWatch(const Session& session, const Selected& selected, const ReferenceOptions& options,
                         const std::vector<std::string>& calls) {
    const SignalIndex index(session);
    for (const NamedSources& named : selected.named) requireMarked(named, options, index);
    Positions signals;
    for (const SignalSource& source : selected.sources()) {
        const Positions found = index.on(source, options);
        if (found.empty()) continue;
        const bool isActivityOpen = source.item && options.activity.empty();
        signals.push_back(isActivityOpen ? signalOnItem(session, source, found) : found.front());
    }
    for (const std::string& call : calls) signals.push_back(signalCalled(session, call));
    return signals;
}

Positions changeClients(Session& session, Positions positions, const ClientSettings& settings) {
    sortUnique(positions);
    std::erase_if(positions, [&](std::size_t position) {
        const SignalClient& before = *session.clients().get(position);
        ks_hmi::StreamingClients::ClientPtr client(before.clone().release());
        apply(settings, *client);
        const bool isSame = isSavedAlike(*client, before);
        if (!isSame) session.clients().set(position, std::move(client));
        return isSame;
    });
    return positions;
}

void removeClients(Session& session, Positions positions) {
    sortUnique(positions, std::greater<>());
    for (const std::size_t position : positions) script::remove(session.clientSet(), position + 1);
}

Positions dropUnusedClients(Session& session) {
    std::vector<std::string> before;
    for (const SignalClient& client : recordsOf(session.clients())) before.push_back(client.m_uuid);
    ks_hmi::StreamingClients::validateAndRemoveUnused(session.clientSet());
    std::unordered_set<std::string> kept;
    for (const SignalClient& client : recordsOf(session.clients())) kept.insert(client.m_uuid);
    Positions dropped = positionsBetween(0, before.size());
    std::erase_if(dropped, [&](std::size_t position) { return kept.contains(before[position]); });
    return dropped;
}

std::vector<ks_hmi::StreamingClients::ClientPtr> alignedClients(const Session& session) {
    std::vector<ks_hmi::StreamingClients::ClientPtr> aligned;
    ks_hmi::StreamingClients::getAlignedObservers(session.clientSet(), aligned);
    if (aligned.size() != session.clients().getCount())
        throw Error({session.fileName()}, "the host cannot tell where the signals of all clients are; try again",
                    ErrorCode::host);
    return aligned;
}

}  // namespace workbench
