#include "workbench/change/observing.h"

#include <functional>

#include "signals/signal_specification.h"
#include "workbench/find/client_names.h"
#include "workbench/session/script.h"
#include "workbench/text/error.h"

namespace workbench {

namespace {

using ks_hmi::SignalClient;
using ks_hmi::SignalSpecification;

}  // namespace

void addClient(Session& session, std::size_t signal, const ClientSettings& settings) {
    const std::u16string& modelName = session.model().name();
    const SignalSpecification& observed = *session.signals().get(signal);
    SignalClient client;
    client.m_uuid = SignalSpecification::getUUIDFromBlockHandle(0, 0.0, /*useMap=*/false);
    client.m_sourceModel = modelName;
    client.m_signalUUID = observed.m_uuid;
    client.m_observerType = settings.type;
    client.m_modelPath = {sourceOf(session.model(), observed).block->path};
    client.m_modelPathEID = {observed.m_eid};
    client.m_observerParams.reset(settings.params ? hvCreateDeepCopy(settings.params.get()) : nullptr);
    client.m_updateRate = settings.updateRate;
    client.m_dimensionChannel = settings.channel;
    client.m_observeImaginaryPart = settings.isImaginary;
    client.m_busLeafPath = settings.busLeaf;
    const HvArrayPtr object = client.getHOSObject(modelName);
    if (!object) throw Error(nameOfSignal(session, signal) + ": the host made no object for a client");
    script::add(session.clientSet(), object.get());
}

void removeClients(Session& session, Positions positions) {
    sortUnique(positions, std::greater<>());
    for (const std::size_t position : positions) script::remove(session.clientSet(), position + 1);
}

std::vector<ks_hmi::StreamingClients::ClientPtr> alignedClients(const Session& session) {
    std::vector<ks_hmi::StreamingClients::ClientPtr> aligned;
    ks_hmi::StreamingClients::getAlignedObservers(session.clientSet(), aligned);
    if (aligned.size() != session.clients().getCount())
        throw Error({session.path(), 0, {}}, "the host cannot tell where the signals of all clients are; try again",
                    ErrorCode::host);
    return aligned;
}

}  // namespace workbench
