#include "workbench/check/client_checks.h"

#include <fmt/format.h>

#include <cstddef>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "host/values.h"
#include "observers/signal_client.h"
#include "workbench/check/field_names.h"
#include "workbench/check/record_checks.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

using ks_hmi::SignalClient;

class ClientChecks final : public SliceChecks {
public:
    ClientChecks(CheckedFile& checked, const kestrel::Model& model, const std::unordered_set<std::string>& signals,
                 const CheckedList& list)
        : m_model(model), m_checks(checked, RecordKind::client, list), m_signals(signals) {}

    void take(const CheckedSlice& slice) override {
        m_checks.each<SignalClient>(
            slice, [this](const SignalClient& client, std::size_t position) { check(client, position); });
    }
    void end() override {}

private:
    void check(const SignalClient& client, std::size_t position);
    void checkSignal(const SignalClient& client, std::size_t position);
    void checkParameters(const SignalClient& client, std::size_t position);
    void add(FindingCode code, const SignalClient& client, std::size_t position, const std::string& field,
             std::string text) {
        m_checks.add(code, position, field, std::move(text), client.m_uuid, {});
    }

    const kestrel::Model& m_model;
    RecordChecks m_checks;
    const std::unordered_set<std::string>& m_signals;  // UUIDs
};

void ClientChecks::check(const SignalClient& client, std::size_t position) {
    m_checks.checkUuid(client.m_uuid, position);
    checkSignal(client, position);
    if (client.isDeprecatedObserver())
        add(FindingCode::clientDeprecated, client, position, "ObserverType_",
            fmt::format("the kind {} is no longer supported", inQuotes(std::string_view(client.m_observerType))));
    const bool hasEid = !client.m_modelPathEID.empty() && !client.m_modelPathEID.front().empty();
    if (!client.m_modelPath.empty() && !hasEid)
        add(FindingCode::clientWithoutEid, client, position, "ModelPathEID_",
            "the model path has no element identifier, and is lost when the block moves");
    checkParameters(client, position);
}

void ClientChecks::checkSignal(const SignalClient& client, std::size_t position) {
    // Without a model path a client belongs to the model that it is saved in, whatever it says.
    const bool isForeign =
        !client.m_modelPath.empty() && !client.m_sourceModel.empty() && client.m_sourceModel != m_model.name();
    if (isForeign)
        return add(FindingCode::clientForeign, client, position, "SourceModel_",
                   fmt::format("the client belongs to the model {}, but this is {}", inQuotes(client.m_sourceModel),
                               inQuotes(m_model.name())));
    // A longer path leads into models below, whose signals are in files of their own.
    if (client.m_modelPath.size() > 1 || m_signals.contains(client.m_signalUUID)) return;
    add(FindingCode::clientWithoutSignal, client, position, "SignalUUID_",
        fmt::format("the model has no signal with the UUID {}", inQuotes(std::string_view(client.m_signalUUID))));
}

void ClientChecks::checkParameters(const SignalClient& client, std::size_t position) {
    for (const std::string& name : wrongFieldNames(client.m_observerParams.get()))
        add(FindingCode::clientParameter, client, position, "ObserverParams_",
            fmt::format("the parameter name {} cannot be a field name", inQuotes(std::string_view(name))));
}

}  // namespace

std::unique_ptr<SliceChecks> clientChecks(CheckedFile& checked, const kestrel::Model& model,
                                          const std::unordered_set<std::string>& signals, const CheckedList& list) {
    return std::make_unique<ClientChecks>(checked, model, signals, list);
}

}  // namespace workbench
