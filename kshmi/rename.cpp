#include <fmt/format.h>

#include "kshmi/change_report.h"
#include "kshmi/commands.h"
#include "kshmi/error.h"
#include "kshmi/host_process.h"
#include "kshmi/renaming.h"
#include "kshmi/script.h"
#include "kshmi/text.h"
#include "memory_host/kestrel/host_side.h"

namespace kshmi {

namespace {

/// What a rename changes in a client.
struct Named {
    std::u16string source;
    std::u16string parameter;
};

Named namesIn(const ks_hmi::SignalClient& client) {
    // A file keeps no source model of a client without a model path.
    const std::u16string source = client.m_modelPath.empty() ? std::u16string() : client.m_sourceModel;
    return {source, textOf(hvGetField(client.m_observerParams.get(), 0, "ModelName"))};
}

std::vector<Named> namesOf(const Session& session) {
    std::vector<Named> names;
    for (std::size_t i = 0; i < session.clients().getCount(); ++i) names.push_back(namesIn(*session.clients().get(i)));
    return names;
}

std::u16string requireName(const std::string& text) {
    std::u16string name = toUtf16(text);
    if (name.find(u'\0') != std::u16string::npos) throw Error(quoted(text) + ": a name has no NUL characters");
    try {
        return kestrel::Model(name).name();
    } catch (const kestrel::ModelError& refusal) {
        throw Error(std::string(refusal.what()) + " Give another name.");
    }
}

void tellClients(const std::vector<Named>& before, const std::vector<Named>& after, ChangeReport& report) {
    std::size_t sources = 0;
    std::size_t parameters = 0;
    for (std::size_t i = 0; i < before.size(); ++i) {
        sources += before[i].source != after[i].source ? 1U : 0U;
        parameters += before[i].parameter != after[i].parameter ? 1U : 0U;
    }
    const std::string renamed = fmt::format("renamed in clients: {} and {}", counted(sources, "source model"),
                                            counted(parameters, "\"ModelName\" parameter"));
    report.note("  would be " + renamed, "  " + renamed);
}

void tellManager(const std::vector<std::string>& received, bool isKnownName, ChangeReport& report) {
    const auto note = [&](const char* would, const char* did, const std::string& what) {
        const auto sentence = [&](const char* verb) { return fmt::format("  the interface manager {}{}", verb, what); };
        report.note(sentence(would), sentence(did));
    };
    for (const std::string& line : received) note("would receive ", "received ", line);
    if (!received.empty()) return;
    note("would not be told", "is not told", isKnownName ? ": the set was last known by this name" : "");
}

}  // namespace

std::vector<std::string> renameModel(Session& session, const std::u16string& name) {
    const std::size_t before = kestrel::recordedRenames().size();
    kestrel::loadedModels().rename(std::u16string(session.model().name()), name);
    session.signals().setModelName(name);
    session.signals().updateObservedPortMap();
    script::renameClientSet(session.clientSet(), name);
    ks_hmi::StreamingClients::handleModelRename(session.clientSet());
    std::vector<std::string> received;
    const auto& all = kestrel::recordedRenames();
    for (std::size_t i = before; i < all.size(); ++i)
        received.push_back(printable(all[i].oldName) + " -> " + printable(all[i].newName));
    return received;
}

int runRename(const RenameArguments& arguments, const Output& output) {
    enterHost(output.err);
    std::vector<std::u16string> names;
    for (const std::string& name : arguments.names) names.push_back(requireName(name));
    Session session(arguments.file);
    // Nothing is validated in between, so the set is known by this name throughout.
    const std::u16string knownName = session.model().name();
    ChangeReport report(output, arguments.isDryRun);
    for (const std::u16string& name : names) {
        const std::u16string oldName = session.model().name();
        if (name == oldName) {
            report.note("already named " + printable(name));
            continue;
        }
        const std::vector<Named> before = namesOf(session);
        const std::vector<std::string> received = renameModel(session, name);
        report.change("rename", "renamed", fmt::format("{} to {}", printable(oldName), printable(name)));
        tellClients(before, namesOf(session), report);
        tellManager(received, name == knownName, report);
    }
    report.finish(session);
    return kSuccess;
}

}  // namespace kshmi
