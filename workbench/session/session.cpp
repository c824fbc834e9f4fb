#include "workbench/session/session.h"

#include <fmt/format.h>

#include <string_view>
#include <unordered_set>
#include <utility>

#include "foundation/model_path.h"
#include "host/messages.h"
#include "host/values.h"
#include "signals/signal_specification.h"
#include "workbench/session/record_alignment.h"
#include "workbench/session/records.h"
#include "workbench/session/refused_field.h"
#include "workbench/session/script.h"
#include "workbench/text/error.h"
#include "workbench/text/text.h"

namespace workbench {

namespace {

std::u16string fullEid(const kestrel::Model& model, const kestrel::Block& block) {
    return toUtf16(ks_hmi_foundation::AddModelToEID(block.eid, model.name()));
}

}  // namespace

Session::Session(std::string path, Opening opening) : m_path(std::move(path)) { openOrUnload(read(), opening); }

Session::Session(std::string path, ModelFile file, Opening opening) : m_path(std::move(path)) {
    openOrUnload(std::move(file), opening);
}

ModelFile Session::read() {
    if (!isStream()) return readModelFile(m_path);
    m_input = readStandardInput();
    return readModelText(fileName(), m_input);
}

void Session::openOrUnload(ModelFile file, Opening opening) {
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
    m_extras = std::move(file.extras);
    m_loaded = &kestrel::loadedModels().load(std::move(file.model));
    makeSets();
    // Before the index is built: an old path may be another block's now.
    alignRecords(file.signals.get(), model());
    give(signalSet(), file.signals.get(), RecordKind::signal, file.signalLines);
    give(clientSet(), file.clients.get(), RecordKind::client, file.clientLines);
    m_names.emplace(*m_signals, model(), std::exchange(m_extras.markedNames, {}));
    check(file.signalLines, opening);
    if (opening != Opening::anyhow) checkClients(file.clientLines);
    bindRenumbered();
}

void Session::makeSets() {
    m_loaded->setSignals(script::newSet(model().name()));
    m_loaded->setClients(script::newClientSet(model().name()));
    m_signals = ks_hmi::InstrumentedSignals::getFromHvArray(signalSet());
    m_clients = ks_hmi::StreamingClients::getFromHvArray(clientSet());
    if (!m_signals || !m_clients)
        throw Error({fileName()}, "the host made no set for the model's signals or clients", ErrorCode::host);
}

void Session::give(hvArray* set, const hvArray* records, RecordKind kind, const std::vector<RecordLines>& lines) const {
    try {
        script::setPersistence(set, records);
    } catch (const kssvIException& exception) {
        const RefusedField refused = refusedField(exception.messageId());
        if (refused.element == 0) throw;
        throw Error(recordPlace(fileName(), kind, lines, refused.element - 1, refused.field), exception.what(),
                    ErrorCode::model);
    }
}

void Session::checkClients(const std::vector<RecordLines>& lines) const {
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

void Session::check(const std::vector<RecordLines>& lines, Opening opening) {
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

void Session::requireSettledNames() const {
    const std::vector<UnsettledMark> marks = m_names->unsettled();
    if (marks.empty() || m_keepsUnsettled) return;
    const UnsettledMark& mark = marks.front();
    const std::string name = toUtf8(fullName(model(), sourceOf(model(), *signals().get(mark.position))));
    const std::string more = marks.size() > 1 ? fmt::format(" (and {} more)", counted(marks.size() - 1, "mark")) : "";
    throw Error(
        {fileName()},
        fmt::format("not saved: {}{}", describe(inQuotes(std::string_view(name)), mark.name, mark.isItem), more),
        ErrorCode::model, Remedy::settleNames);
}

// A path finds a port by its logical number, which blocks do not tell; once bound, ports answer by handle.
void Session::bindRenumbered() {
    for (const ks_hmi::SignalSpecification& signal : recordsOf(signals())) {
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
            throw Error({fileName()},
                        fmt::format("not saved, the file is as it was: the host cannot tell where the block of signal "
                                    "{} is; try again",
                                    i + 1),
                        ErrorCode::host);
}

// Only what is there can be aligned; what is settled later keeps the path that it had.
void Session::keepLostPaths(hvArray* saved) const {
    std::size_t element = 0;
    for (const ks_hmi::SignalSpecification& signal : recordsOf(signals())) {
        if (signal.m_excludeForSave) continue;
        if (!blockOf(model(), signal))
            hvReplaceField(saved, element, "BlockPath_", ks_host::makeText(signal.m_blockPath).release());
        ++element;
    }
}

Session::Saved Session::savedForm() {
    requireSettledNames();
    const HvArrayPtr copy = signals().copy(/*excludeUnsaved=*/true);
    Saved saved{script::persistence(copy.get()), nullptr};
    if (m_keepsUnsettled) keepLostPaths(saved.signals.get());
    requirePaths(saved.signals.get());
    saved.clients = script::persistence(clientSet());
    m_extras.markedNames = m_names->toSave();
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
        throw Error({fileName()}, "the model came from standard input; name a file to save it in", ErrorCode::request);
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
