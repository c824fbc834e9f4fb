#include "kshmi/observing.h"

#include <fmt/format.h>

#include <algorithm>
#include <functional>
#include <iterator>

#include "kshmi/error.h"
#include "kshmi/marking.h"
#include "kshmi/script.h"
#include "kshmi/text.h"

namespace kshmi {

namespace {

using ks_hmi::SignalClient;
using ks_hmi::SignalSpecification;

std::string nameOfSignal(const Session& session, std::size_t position) {
    const SignalSpecification& signal = *session.signals().get(position);
    const SignalSource source = sourceOf(session.model(), signal);
    const std::string name = printable(source.block ? fullName(session.model(), source) : signal.m_blockPath);
    return source.item ? fmt::format("{} ({})", name, printable(activityOf(signal))) : name;
}

bool isOpen(std::u16string_view modelName) {
    return modelName.empty() || kestrel::loadedModels().find(modelName) != nullptr;
}

/// The first element of the model path is in the owning model; the others start with their model's name.
bool namesOpenModelsOnly(const SignalClient& client) {
    if (!client.m_modelPath.empty() && !isOpen(client.m_sourceModel)) return false;
    for (std::size_t i = 1; i < client.m_modelPath.size(); ++i)
        if (!isOpen(client.m_modelPath[i].substr(0, client.m_modelPath[i].find(u'/')))) return false;
    return true;
}

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
        throw Error(session.path() + ": the host cannot tell where the signals of all clients are; try again");
    return aligned;
}

SignalUuids::SignalUuids(const Session& session) {
    m_positions.reserve(session.signals().getCount());
    for (std::size_t i = 0; i < session.signals().getCount(); ++i)
        m_positions.emplace(session.signals().get(i)->m_uuid, i);
}

std::optional<std::size_t> SignalUuids::positionOf(std::string_view uuid) const {
    const auto found = m_positions.find(uuid);
    return found == m_positions.end() ? std::nullopt : std::optional(found->second);
}

Watched watched(const SignalClient& client, const SignalUuids& uuids) {
    if (uuids.positionOf(client.m_signalUUID)) return Watched::here;
    return namesOpenModelsOnly(client) ? Watched::gone : Watched::elsewhere;
}

std::string nameOfClient(const Session& session, std::size_t position) {
    return fmt::format("client {} ({})", position + 1,
                       printable(std::string_view(session.clients().get(position)->m_observerType)));
}

std::string describeClient(const Session& session, std::size_t position, const SignalUuids& uuids) {
    const SignalClient& client = *session.clients().get(position);
    const std::optional<std::size_t> signal = uuids.positionOf(client.m_signalUUID);
    const std::string name = nameOfClient(session, position);
    if (signal) return name + " on " + nameOfSignal(session, *signal);
    return fmt::format("{} of the absent signal {}", name, quoted(std::string_view(client.m_signalUUID)));
}

std::string notesOn(const SignalClient& client, Watched target) {
    std::string notes;
    const auto add = [&](bool isSo, const std::string& note) {
        if (isSo) notes += (notes.empty() ? "" : ", ") + note;
    };
    add(target == Watched::gone, "dangling");
    add(target == Watched::elsewhere, "in a model that is not open");
    add(client.isDeprecatedObserver(), "deprecated");
    add(client.m_observeImaginaryPart, "imaginary part");
    add(!client.m_busLeafPath.empty(), "leaf " + printable(std::string_view(client.m_busLeafPath)));
    return notes;
}

DanglingWatch::DanglingWatch(const Session& session) : m_session(session), m_before(dangling()) {}

std::vector<std::size_t> DanglingWatch::dangling() const {
    const SignalUuids uuids(m_session);
    std::vector<std::size_t> positions;
    for (std::size_t i = 0; i < m_session.clients().getCount(); ++i)
        if (watched(*m_session.clients().get(i), uuids) == Watched::gone) positions.push_back(i);
    return positions;
}

void DanglingWatch::warn(const Output& output, bool isDryRun) const {
    const std::vector<std::size_t> now = dangling();
    std::vector<std::size_t> lost;
    std::set_difference(now.begin(), now.end(), m_before.begin(), m_before.end(), std::back_inserter(lost));
    if (lost.empty()) return;
    std::string names;
    for (const std::size_t position : lost) names += (names.empty() ? "" : ", ") + nameOfClient(m_session, position);
    output.err << "warning: " << (isDryRun ? "would be " : "") << "left without a signal: " << names;
    if (!isDryRun)
        output.err << fmt::format("; \"kshmi unobserve {} --dangling\" removes {}",
                                  printable(std::string_view(m_session.path())), lost.size() == 1 ? "it" : "them");
    output.err << '\n';
}

}  // namespace kshmi
