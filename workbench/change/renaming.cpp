#include "workbench/change/renaming.h"

#include "memory_host/kestrel/host_side.h"
#include "workbench/session/script.h"
#include "workbench/text/text.h"

namespace workbench {

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

}  // namespace workbench
