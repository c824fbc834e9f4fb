#include "workbench/change/observing.h"

#include <functional>
#include <utility>

#include "signals/signal_specification.h"
#include "workbench/find/client_names.h"
#include "workbench/session/records.h"
#include "workbench/session/script.h"
#include "workbench/text/error.h"

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

std::vector<ks_hmi::StreamingClients::ClientPtr> alignedClients(const Session& session) {
    std::vector<ks_hmi::StreamingClients::ClientPtr> aligned;
    ks_hmi::StreamingClients::getAlignedObservers(session.clientSet(), aligned);
    if (aligned.size() != session.clients().getCount())
        throw Error({session.fileName()}, "the host cannot tell where the signals of all clients are; try again",
                    ErrorCode::host);
    return aligned;
}

}  // namespace workbench
