#include "memory_host/kestrel/host_side.h"

#include "memory_host/kestrel/host_definitions.h"
#include "memory_host/kestrel/loaded_models.h"

namespace kestrel {

void installHostSide() {
    defineSignalSpecification();
    defineIsEqual();
    defineRebinding();
    defineSignalClient();
    defineModelObservers();
    defineInterfaceManager();
    defineObserverFunctions();
    definePortQueries();
    noteHostSide();
}

void releaseHostSide() noexcept {
    loadedModels().unloadAll();
    clearRecords();
}

}  // namespace kestrel
