#include "report/sections/client_text.h"

#include "observers/signal_client.h"
#include "workbench/find/client_names.h"
#include "workbench/text/columns.h"
#include "workbench/text/text.h"
#include "workbench/values/host_value_writer.h"

namespace report {

using namespace workbench;

namespace {

constexpr std::size_t kLongestParameters = 200;

// Empty when nothing was said.
std::string parametersOf(const ks_hmi::SignalClient& client) {
    if (hvGetNumberOfElements(client.m_observerParams.get()) == 0) return {};
    std::string json;
    appendJsonValue(json, client.m_observerParams.get());
    return json == "{}" || json == "null" ? std::string() : shortened(printableJson(json), kLongestParameters);
}

}  // namespace

void writeClient(Html& html, const Contents& contents, const PageIndex& index, std::size_t position) {
    const ks_hmi::SignalClient& client = *contents.session.clients().get(position);
    html.add("<li id=\"c{}\"><b>{}</b> <span class=\"set\">rate {}", position + 1,
             Name(std::string_view(client.m_observerType)), static_cast<std::uint32_t>(client.m_updateRate));
    const auto channel = static_cast<std::uint32_t>(client.m_dimensionChannel);
    if (channel != 1) html.add(", channel {}", channel);
    if (!index.uuids().positionOf(client.m_signalUUID))
        html.add(", for the signal {}", Name(std::string_view(client.m_signalUUID)));
    html.add("</span>");
    const std::u16string& model = contents.session.model().name();
    const bool isAmiss =
        client.isDeprecatedObserver() || stateOf(client, index.uuids(), model) != ClientState::watching;
    const std::string notes = notesOn(client, index.uuids(), model);
    if (!notes.empty()) html.add(" <span class=\"{}\">{}</span>", isAmiss ? "amiss" : "set", Message{notes});
    const std::string parameters = parametersOf(client);
    if (!parameters.empty()) html.add(" <code>{}</code>", Message{parameters});
    html.add("</li>\n");
}

}  // namespace report
