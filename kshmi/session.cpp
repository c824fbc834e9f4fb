#include "kshmi/session.h"

#include <utility>
#include <variant>

#include "foundation/model_path.h"
#include "host/messages.h"
#include "kshmi/error.h"
#include "kshmi/script.h"
#include "kshmi/text.h"

namespace kshmi {

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

Session::Session(std::string path, Opening opening) : m_path(std::move(path)) {
    try {
        read(opening);
    } catch (...) {
        if (m_loaded) kestrel::loadedModels().unload(std::u16string(m_loaded->model().name()));
        throw;
    }
}

Session::~Session() {
    const std::u16string name = m_loaded->model().name();
    kestrel::loadedModels().unload(name);
}

void Session::read(Opening opening) {
    ModelFile file = readModelFile(m_path);
    m_loaded = &kestrel::loadedModels().load(std::move(file.model));
    m_clients = std::move(file.clients);
    m_loaded->setSignals(script::newSet(model().name()));
    m_signals = ks_hmi::InstrumentedSignals::getFromHvArray(set());
    if (!m_signals) throw Error(m_path + ": the host made no set for the model's signals");
    giveSignals(file);
    check(file.signalLines, opening);
    rebindMoved();
}

void Session::giveSignals(const ModelFile& file) {
    try {
        script::setPersistence(set(), file.signals.get());
    } catch (const kssvIException& exception) {
        const RefusedField refused = refusedField(exception.messageId());
        if (refused.element == 0) throw;
        throw Error(atSignal(m_path, file.signalLines, refused.element - 1, refused.field, exception.what()));
    }
}

void Session::check(const std::vector<ModelFile::SignalLines>& lines, Opening opening) {
    for (SignalFault& fault : faultsOf(signals(), model())) {
        if (!fault.isDangling || opening == Opening::strict) {
            const std::string remedy =
                fault.isDangling ? "; correct it, or remove such signals with \"kshmi unmark FILE --dangling\""
                                 : "; correct it or remove the signal";
            throw Error(atSignal(m_path, lines, fault.position, fault.field, fault.text + remedy));
        }
        m_dangling.push_back(std::move(fault));
    }
}

// Signals find a moved block by its element identifier; their ports answer by handle once they are bound anew.
void Session::rebindMoved() {
    for (std::size_t i = 0; i < signals().getCount(); ++i) {
        const ks_hmi::SignalSpecification& signal = *signals().get(i);
        const kestrel::Block* const block = blockOf(model(), signal);
        if (!block || block->path == signal.m_blockPath || isChartSignal(signal)) continue;
        return ks_hmi::InstrumentedSignals::applyRebindingRules(set(), true);
    }
}

bool Session::isObserved(const kestrel::Block& block, int port) const {
    return signals().isPortObserved(block.handle, port) ||
           signals().isPortObserved(block.handle, block.path, std::u16string(), port, 0, 0);
}

bool Session::isObserved(const kestrel::Block& block, const ChartItem& item, const std::u16string& activity) const {
    return signals().isCWActivityObserved(fullEid(model(), block), item.ssid, activity);
}

bool Session::isAnyObserved(const kestrel::Block& block, const ChartItem& item) const {
    return signals().isAnyCWActivityObserved(fullEid(model(), block), item.ssid);
}

// A signal that the host cannot align is saved without its path; no file is to lose paths to that.
void Session::requirePaths(const hvArray* saved) const {
    for (std::size_t i = 0; i < hvGetNumberOfElements(saved); ++i)
        if (hvIsEmpty(hvGetField(saved, i, "BlockPath_")))
            throw Error(m_path + ": not saved, the file is as it was: the host cannot tell where the block of signal " +
                        std::to_string(i + 1) + " is; try again");
}

std::size_t Session::save() {
    const HvArrayPtr copy = signals().copy(/*excludeUnsaved=*/true);
    const HvArrayPtr saved = script::persistence(copy.get());
    requirePaths(saved.get());
    writeModelFile(m_path, model(), saved.get(), m_clients);
    return signals().getCount() - hvGetNumberOfElements(saved.get());
}

}  // namespace kshmi
