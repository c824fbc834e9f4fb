#include "workbench/change/renaming.h"

#include <fmt/format.h>

#include "host/values.h"
#include "memory_host/kestrel/host_side.h"
#include "observers/signal_client.h"
#include "workbench/session/records.h"
#include "workbench/session/script.h"
#include "workbench/text/error.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

// What a rename changes in a client.
struct Named {
    std::u16string source;
    std::u16string parameter;
};

Named namesIn(const ks_hmi::SignalClient& client) {
    // A file keeps no source model of a client without a model path.
    const std::u16string source = client.m_modelPath.empty() ? std::u16string() : client.m_sourceModel;
    return {source, ks_host::textOf(hvGetField(client.m_observerParams.get(), 0, "ModelName"))};
}

std::vector<Named> namesOf(const Session& session) {
    std::vector<Named> names;
    for (const auto& client : recordsOf(session.clients())) names.push_back(namesIn(client));
    return names;
}

}  // namespace

std::u16string requireModelName(std::string_view text) {
    std::u16string name = toUtf16(text);
    if (name.find(u'\0') != std::u16string::npos)
        throw Error(fmt::format("{}: a name cannot contain NUL characters", inQuotes(text)));
    try {
        return kestrel::Model(name).name();
    } catch (const kestrel::ModelError& refusal) {
        throw Error(fmt::format("{} Give another name.", refusal.what()));
    }
}

Renamed renameModel(Session& session, const std::u16string& name) {
    const std::vector<Named> before = namesOf(session);
    const std::size_t told = kestrel::recordedRenames().size();
    kestrel::loadedModels().rename(std::u16string(session.model().name()), name);
    session.signals().setModelName(name);
    session.signals().updateObservedPortMap();
    script::renameClientSet(session.clientSet(), name);
    ks_hmi::StreamingClients::handleModelRename(session.clientSet());
    Renamed renamed;
    const std::vector<Named> after = namesOf(session);
    for (std::size_t i = 0; i < before.size(); ++i) {
        renamed.sourceModels += before[i].source != after[i].source ? 1U : 0U;
        renamed.parameters += before[i].parameter != after[i].parameter ? 1U : 0U;
    }
    const auto& all = kestrel::recordedRenames();
    for (std::size_t i = told; i < all.size(); ++i)
        renamed.received.push_back(fmt::format("{} -> {}", printable(all[i].oldName), printable(all[i].newName)));
    return renamed;
}

}  // namespace workbench
