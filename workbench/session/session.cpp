#include "workbench/session/session.h"

#include <fmt/format.h>

#include <string_view>
#include <unordered_set>
#include <utility>
#include <variant>

#include "foundation/model_path.h"
#include "host/messages.h"
#include "host/values.h"
#include "signals/signal_specification.h"
#include "workbench/session/record_alignment.h"
#include "workbench/session/script.h"
#include "workbench/text/error.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

/// The field and the 1-based element that a refusal of persisted data names.
struct RefusedField {
    std::string field;
    std::size_t element = 0;
};

RefusedField refusedField(const resource_core::BaseMsgID& id) {
    RefusedField refused;
    const bool namesField = id.key() == "MissingField" || id.key() == "InvalidFieldValue";
    if (id.catalogue() != "plv_hmi_foundation:errors" || !namesField || id.arguments().size() != 2) return refused;
    if (const auto* field = std::get_if<std::string>(id.arguments().data())) refused.field = *field;
    if (const auto* element = std::get_if<std::int64_t>(&id.arguments()[1]))
        refused.element = static_cast<std::size_t>(*element);
    return refused;
}

std::u16string fullEid(const kestrel::Model& model, const kestrel::Block& block) {
    return toUtf16(ks_hmi_foundation::AddModelToEID(block.eid, model.name()));
}

}  // namespace

Session::Session(std::string path, Opening opening) : Session(path, readModelFile(path), opening) {}

Session::Session(std::string path, ModelFile file, Opening opening) : m_path(std::move(path)) {
    try {
        open(std::move(file), opening);
    } catch (...) {
        if (m_loaded) kestrel::loadedModels().unload(std::u16string(m_loaded->model().name()));
        throw;
    }
}

Session::~Session() {
    const std::u16string name = m_loaded->model().name();
    kestrel::loadedModels().unload(name);
}

void Session::open(ModelFile file, Opening opening) {
    m_version = file.version;
    keep(std::move(file.extras), file.signals.get());
    m_loaded = &kestrel::loadedModels().load(std::move(file.model));
    makeSets();
    // Before the index is built: an old path may be another block's now.
    alignRecords(file.signals.get(), model());
    give(signalSet(), file.signals.get(), RecordKind::signal, file.signalLines);
    give(clientSet(), file.clients.get(), RecordKind::client, file.clientLines);
    check(file.signalLines, opening);
    checkClients(file.clientLines);
    bindRenumbered();
}

void Session::makeSets() {
    m_loaded->setSignals(script::newSet(model().name()));
    m_loaded->setClients(script::newClientSet(model().name()));
    m_signals = ks_hmi::InstrumentedSignals::getFromHvArray(signalSet());
    m_clients = ks_hmi::StreamingClients::getFromHvArray(clientSet());
    if (!m_signals || !m_clients)
        throw Error({m_path, 0, {}}, "the host made no set for the model's signals or clients", ErrorCode::host);
}

void Session::give(hvArray* set, const hvArray* records, RecordKind kind, const std::vector<RecordLines>& lines) const {
    try {
        script::setPersistence(set, records);
    } catch (const kssvIException& exception) {
        const RefusedField refused = refusedField(exception.messageId());
        if (refused.element == 0) throw;
        throw Error(recordPlace(m_path, kind, lines, refused.element - 1, refused.field), exception.what(),
                    ErrorCode::model);
    }
}

void Session::checkClients(const std::vector<RecordLines>& lines) const {
    std::unordered_set<std::string_view> uuids;
    for (std::size_t i = 0; i < clients().getCount(); ++i) {
        const std::string& uuid = clients().get(i)->m_uuid;
        if (!uuid.empty() && uuids.insert(uuid).second) continue;
        const std::string text =
            uuid.empty() ? "the client has no UUID" : fmt::format("another client has the UUID {}", inQuotes(uuid));
        throw Error(recordPlace(m_path, RecordKind::client, lines, i, "UUID"),
                    text + "; correct it or remove the client", ErrorCode::model);
    }
}

void Session::check(const std::vector<RecordLines>& lines, Opening opening) {
    for (SignalFault& fault : faultsOf(signals(), model())) {
        if (!fault.isDangling || opening == Opening::strict) {
            const char* const advice = fault.isDangling ? "; correct it" : "; correct it or remove the signal";
            throw Error(recordPlace(m_path, RecordKind::signal, lines, fault.position, fault.field),
                        fault.text + advice, ErrorCode::model,
                        fault.isDangling ? Remedy::removeDangling : Remedy::none);
        }
        m_dangling.push_back(std::move(fault));
    }
}

// A path finds a port by its logical number, which blocks do not tell; once bound, ports answer by handle.
void Session::bindRenumbered() {
    for (std::size_t i = 0; i < signals().getCount(); ++i) {
        const ks_hmi::SignalSpecification& signal = *signals().get(i);
        const bool isRenumbered =
            signal.m_logicalPortIndex >= 1 && signal.m_logicalPortIndex != signal.m_outputPortIndex;
        if (isRenumbered && !isChartSignal(signal)) return signals().applyRebindingRules(signalSet(), true);
    }
}

bool Session::isObserved(const kestrel::Block& block, int port) const {
    return m_signals->isPortObserved(block.handle, port) ||
           m_signals->isPortObserved(block.handle, block.path, std::u16string(), port, 0, 0);
}

bool Session::isObserved(const kestrel::Block& block, const ChartItem& item, const std::u16string& activity) const {
    return signals().isCWActivityObserved(fullEid(model(), block), item.ssid, activity);
}

bool Session::isAnyObserved(const kestrel::Block& block, const ChartItem& item) const {
    return m_signals->isAnyCWActivityObserved(fullEid(model(), block), item.ssid);
}

// A signal that the host cannot align is saved without its path; no file is to lose paths to that.
void Session::requirePaths(const hvArray* saved) const {
    for (std::size_t i = 0; i < hvGetNumberOfElements(saved); ++i)
        if (hvIsEmpty(hvGetField(saved, i, "BlockPath_")))
            throw Error({m_path, 0, {}},
                        fmt::format("not saved, the file is as it was: the host cannot tell where the block of signal "
                                    "{} is; try again",
                                    i + 1),
                        ErrorCode::host);
}

void Session::keep(ModelExtras extras, const hvArray* signals) {
    m_extras = std::move(extras);
    for (const std::size_t i : ks_host::indicesOf(signals))
        if (const std::u16string* const name = m_extras.markedName(i))
            m_markedNames.emplace(ks_host::textOf(hvGetField(signals, i, "UUID")), *name);
}

void Session::nameMarks(const hvArray* saved) {
    m_extras.markedNames.clear();
    for (const std::size_t i : ks_host::indicesOf(saved)) {
        const auto found = m_markedNames.find(ks_host::textOf(hvGetField(saved, i, "UUID")));
        m_extras.markedNames.push_back(found == m_markedNames.end() ? std::nullopt : std::optional(found->second));
    }
}

Session::Saved Session::savedForm() {
    const HvArrayPtr copy = signals().copy(/*excludeUnsaved=*/true);
    Saved saved{script::persistence(copy.get()), nullptr};
    requirePaths(saved.signals.get());
    saved.clients = script::persistence(clientSet());
    nameMarks(saved.signals.get());
    return saved;
}

std::size_t Session::leftOut(const Saved& saved) const {
    return signals().getCount() - hvGetNumberOfElements(saved.signals.get());
}

Session::SaveResult Session::noteWritten(const Saved& saved, WrittenFile file) {
    m_version = file.version;
    return {leftOut(saved), std::move(file.warnings)};
}

Session::SaveResult Session::save() {
    if (isStream() && !m_sink)
        throw Error({m_path}, "the model came from standard input; name a file to save it in", ErrorCode::request);
    const Saved saved = savedForm();
    if (!m_sink)
        return noteWritten(
            saved, writeModelFile(m_path, model(), saved.signals.get(), saved.clients.get(), m_extras, m_version));
    writeModel(m_sink, model(), saved.signals.get(), saved.clients.get(), m_extras);
    return {leftOut(saved), {}};
}

Session::SaveResult Session::saveAs(const std::string& path, Existing existing) {
    const Saved saved = savedForm();
    const auto write = [&](auto function) {
        return function(path, model(), saved.signals.get(), saved.clients.get(), m_extras);
    };
    SaveResult result = noteWritten(saved, existing == Existing::refuse
                                               ? write(writeNewModelFile)
                                               : write([](const auto&... what) { return writeModelFile(what...); }));
    m_path = path;
    m_sink = nullptr;
    return result;
}

std::string Session::text() {
    const Saved saved = savedForm();
    return modelText(model(), saved.signals.get(), saved.clients.get(), m_extras);
}

}  // namespace workbench
