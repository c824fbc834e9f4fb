#include "workbench/find/client_names.h"

#include <fmt/format.h>

#include "signals/signal_specification.h"
#include "workbench/text/text.h"

namespace workbench {

using ks_hmi::SignalClient;

std::string nameOfSignal(const Session& session, std::size_t position) {
    const ks_hmi::SignalSpecification& signal = *session.signals().get(position);
    const SignalSource source = sourceOf(session.model(), signal);
    const std::string name = printable(source.block ? fullName(session.model(), source) : signal.m_blockPath);
    return source.item ? fmt::format("{} ({})", name, printable(activityOf(signal))) : name;
}

std::string describeSignal(const Session& session, std::size_t position) {
    const ks_hmi::SignalSpecification& signal = *session.signals().get(position);
    const bool isGone = blockOf(session.model(), signal) == nullptr;
    return fmt::format("signal {}, {} on {}{}", position + 1, inQuotes(signal.m_signalName),
                       nameOfSignal(session, position), isGone ? " (gone)" : "");
}

std::string nameOfClient(const Session& session, std::size_t position) {
    return fmt::format("client {} ({})", position + 1,
                       printable(std::string_view(session.clients().get(position)->m_observerType)));
}

std::string describeClient(const Session& session, std::size_t position, const SignalUuids& uuids) {
    const SignalClient& client = *session.clients().get(position);
    const std::optional<std::size_t> signal = uuids.positionOf(client.m_signalUUID);
    const std::string name = nameOfClient(session, position);
    if (signal) return fmt::format("{} on {}", name, nameOfSignal(session, *signal));
    return fmt::format("{} of the absent signal {}", name, inQuotes(std::string_view(client.m_signalUUID)));
}

std::string notesOn(const SignalClient& client, const SignalUuids& uuids, std::u16string_view modelName) {
    const Watched target = watched(client, uuids);
    const bool isForeign = stateOf(client, uuids, modelName) == ClientState::foreign;
    std::vector<std::string> notes;
    const auto add = [&](bool isSo, const std::string& note) {
        if (isSo) notes.push_back(note);
    };
    add(target == Watched::gone, "dangling");
    add(target == Watched::elsewhere, "in a model that is not open");
    add(isForeign, "foreign: of the model " + printable(client.m_sourceModel));
    add(client.isDeprecatedObserver(), "deprecated");
    add(client.m_observeImaginaryPart, "imaginary part");
    add(!client.m_busLeafPath.empty(), "leaf " + printable(std::string_view(client.m_busLeafPath)));
    return listed(notes);
}

}  // namespace workbench
