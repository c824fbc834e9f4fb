#include "memory_host/orvex/objects/pinned_libraries.h"

#include <dlfcn.h>

#include <algorithm>
#include <vector>

namespace orvex {

namespace {

// Never destroyed: at the end of the process the loader takes down what is left, in its own order.
std::vector<void*>& handles() {
    static auto& handles = *new std::vector<void*>;
    return handles;
}

}  // namespace

void pinLibraryOf(const void* address) {
    Dl_info found{};
    if (dladdr(address, &found) == 0 || !found.dli_fname) return;
    handles().reserve(handles().size() + 1);
    void* const handle = dlopen(found.dli_fname, RTLD_NOW | RTLD_NOLOAD);
    if (!handle) return;
    if (std::ranges::find(handles(), handle) == handles().end())
        handles().push_back(handle);
    else
        dlclose(handle);
}

void releaseLibraries() noexcept {
    for (void* const handle : handles()) dlclose(handle);
    handles().clear();
}

}  // namespace orvex
