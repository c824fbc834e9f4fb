#include "kshmi/print/json/json_records.h"

#include <optional>

#include "signals/signal_specification.h"
#include "workbench/values/host_value_writer.h"

namespace kshmi {

using namespace workbench;

namespace {

void appendId(JsonObject& object, std::string_view name, std::string_view uuid, std::optional<std::size_t> position) {
    object.name(name);
    JsonObject id(object.out());
    id.text("uuid", uuid);
    position ? id.number("position", *position + 1) : id.null("position");
    id.close();
}

// Of a signal whose block is gone.
void appendGone(JsonObject& object, const kestrel::Model& model, const ks_hmi::SignalSpecification& signal) {
    object.text("block", model.name() + u"/" + signal.m_blockPath).truth("gone", true);
    if (isChartSignal(signal))
        object.text("item", signal.m_subPath).text("domain", signal.m_domainType);
    else
        object.number("port", signal.m_outputPortIndex);
}

}  // namespace

void appendSource(JsonObject& object, const kestrel::Model& model, const SignalSource& source) {
    object.text("block", model.fullPath(*source.block));
    if (source.item)
        object.text("item", source.item->subPath)
            .text("domain", source.item->domainType)
            .number("ssid", source.item->ssid);
    else
        object.number("port", source.port).text("portName", portName(source));
}

void appendAnswer(JsonObject& object, const kestrel::Model& model, const Answer& answer) {
    appendSource(object, model, answer.source);
    if (!answer.activity.empty()) object.text("activity", answer.activity);
    object.truth("observed", answer.isObserved);
}

void appendSignalId(JsonObject& object, const Session& session, std::size_t position) {
    appendId(object, "signal", session.signals().get(position)->m_uuid, position);
}

void appendSignal(JsonObject& object, const Session& session, std::size_t position) {
    const ks_hmi::SignalSpecification& signal = *session.signals().get(position);
    const SignalSource source = sourceOf(session.model(), signal);
    appendSignalId(object, session, position);
    source.block ? appendSource(object, session.model(), source) : appendGone(object, session.model(), signal);
    if (source.item) object.text("activity", activityOf(signal));
    object.text("name", signal.m_signalName).number("decimation", signal.m_decimation);
    object.number("maxPoints", signal.m_maxPoints).truth("frameBased", signal.m_isFrameBased);
    object.truth("hidden", signal.m_hideInPLV).truth("buffered", signal.m_targetBufferedStreaming);
    object.text("visualType", signal.m_visualType).truth("excludedFromSave", signal.m_excludeForSave);
}

void appendClient(JsonObject& object, const ks_hmi::SignalClient& client, std::size_t position, const Session& session,
                  const SignalUuids& uuids) {
    appendId(object, "client", client.m_uuid, position);
    object.text("type", std::string_view(client.m_observerType));
    appendId(object, "signal", client.m_signalUUID, uuids.positionOf(client.m_signalUUID));
    object.text("state", std::string_view(nameOf(stateOf(client, uuids, session.model().name()))));
    object.truth("deprecated", client.isDeprecatedObserver()).text("sourceModel", client.m_sourceModel);
    object.number("updateRate", client.m_updateRate).number("channel", client.m_dimensionChannel);
    object.truth("imaginary", client.m_observeImaginaryPart).text("busLeaf", std::string_view(client.m_busLeafPath));
    object.name("params");
    appendJsonValue(object.out(), client.m_observerParams.get());
}

}  // namespace kshmi
