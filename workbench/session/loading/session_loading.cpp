#include <fmt/format.h>

#include <optional>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "host/messages.h"
#include "signals/signal_specification.h"
#include "workbench/session/host_process.h"
#include "workbench/session/loading/record_alignment.h"
#include "workbench/session/loading/refused_field.h"
#include "workbench/session/records.h"
#include "workbench/session/script.h"
#include "workbench/session/session.h"
#include "workbench/text/error.h"
#include "workbench/text/text.h"

namespace workbench {

// Fills the session while its file is being read: the records are host values for a moment only.
class Session::Loader final : public ModelSink {
public:
    explicit Loader(Session& session) : m_session(session) {}

    void takeModel(kestrel::Model model) override {
        m_session.m_loaded = &kestrel::loadedModels().load(std::move(model));
        m_session.makeSets();
        m_session.m_names.emplace(m_session.signals(), m_session.model());
        m_checker.emplace(m_session.model());
        m_aligner.emplace(m_session.model());
    }

    void takeRecords(RecordKind kind, RecordSlice slice, const RecordLines& lines) override {
        if (kind == RecordKind::client) return give(m_session.clientSet(), kind, slice, lines);
        // Before the index is built: an old path may be another block's now.
        m_aligner->align(slice.records.get());
        give(m_session.signalSet(), kind, slice, lines);
        m_session.m_names->take(slice.first, slice.markedNames, *m_checker);
    }

private:
    void give(hvArray* set, RecordKind kind, const RecordSlice& slice, const RecordLines& lines) const {
        try {
            script::setPersistence(set, slice.records.get());
        } catch (const kssvIException& exception) {
            const RefusedField refused = refusedField(exception.messageId());
            if (refused.element == 0) throw;
            const std::size_t position = slice.first + refused.element - 1;
            throw Error(recordPlace(m_session.fileName(), kind, lines, position, refused.field),
                        refusalText(exception, position), ErrorCode::model);
        }
    }

    Session& m_session;
    std::optional<NameChecker> m_checker;
    std::optional<RecordAligner> m_aligner;
};

Session::Session(std::string path, Opening opening) : m_path(std::move(path)) {
    openOrUnload(opening, [&](Loader& loader) { return read(loader); });
}

Session::Session(std::string path, ModelFile file, Opening opening) : m_path(std::move(path)) {
    openOrUnload(opening, [&](Loader& loader) -> RestOfModelFile {
        loader.takeModel(std::move(file.model));
        MarkedNameList names = std::exchange(file.extras.markedNames, {});
        loader.takeRecords(RecordKind::signal, {0, std::move(file.signals), std::move(names)}, file.signalLines);
        loader.takeRecords(RecordKind::client, {0, std::move(file.clients)}, file.clientLines);
        return {std::move(file.signalLines), std::move(file.clientLines), std::move(file.extras), file.version};
    });
}

template <class Load>
void Session::openOrUnload(Opening opening, Load load) {
    leaveSignals(nullptr);
    try {
        Loader loader(*this);
        RestOfModelFile rest = load(loader);
        m_version = rest.version;
        m_extras = std::move(rest.extras);
        check(rest.signalLines, opening);
        if (opening != Opening::anyhow) checkClients(rest.clientLines);
        bindRenumbered();
    } catch (...) {
        if (m_loaded) kestrel::loadedModels().unload(std::u16string(m_loaded->model().name()));
        throw;
    }
}

RestOfModelFile Session::read(ModelSink& sink) {
    if (!isStream()) return readModelFile(m_path, sink);
    m_input = readStandardInput();
    return readModelText(fileName(), m_input, sink);
}

void Session::makeSets() {
    m_loaded->setSignals(script::newSet(model().name()));
    m_loaded->setClients(script::newClientSet(model().name()));
    m_signals = ks_hmi::InstrumentedSignals::getFromHvArray(signalSet());
    m_clients = ks_hmi::StreamingClients::getFromHvArray(clientSet());
    if (!m_signals || !m_clients)
        throw Error({fileName()}, "the host made no set for the model's signals or clients", ErrorCode::host);
}

void Session::checkClients(const RecordLines& lines) const {
    std::unordered_set<std::string_view> uuids;
    for (const auto& [position, client] : numbered(clients())) {
        const std::string& uuid = client.m_uuid;
        if (!uuid.empty() && uuids.insert(uuid).second) continue;
        const std::string text =
            uuid.empty() ? "the client has no UUID" : fmt::format("another client has the UUID {}", inQuotes(uuid));
        throw Error(recordPlace(fileName(), RecordKind::client, lines, position, "UUID"),
                    text + "; correct it or remove the client", ErrorCode::model);
    }
}

void Session::check(const RecordLines& lines, Opening opening) {
    for (SignalFault& fault : faultsOf(signals(), model())) {
        const bool isLetIn = opening == Opening::anyhow || (fault.isDangling && opening == Opening::lenient);
        if (!isLetIn) refuse(fault, recordPlace(fileName(), RecordKind::signal, lines, fault.position, fault.field));
        if (fault.isDangling) m_dangling.push_back(std::move(fault));
    }
}

void Session::refuse(const SignalFault& fault, const ErrorPlace& place) const {
    if (!fault.isDangling) throw Error(place, fault.text + "; correct it or remove the signal", ErrorCode::model);
    for (const UnsettledMark& mark : m_names->unsettled())
        if (mark.position == fault.position)
            throw Error(place, fmt::format("{}; {}", fault.text, describe("the signal", mark.name, mark.isItem)),
                        ErrorCode::model, Remedy::settleNames);
    throw Error(place, fault.text + "; correct it", ErrorCode::model, Remedy::removeDangling);
}

// A path finds a port by its logical number, which blocks do not tell; once bound, ports answer by handle.
void Session::bindRenumbered() {
    for (const ks_hmi::SignalSpecification& signal : recordsOf(signals())) {
        const bool isRenumbered =
            signal.m_logicalPortIndex >= 1 && signal.m_logicalPortIndex != signal.m_outputPortIndex;
        if (isRenumbered && !isChartSignal(signal)) return signals().applyRebindingRules(signalSet(), true);
    }
}

}  // namespace workbench
