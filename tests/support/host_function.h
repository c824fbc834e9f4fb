#pragma once

#include <dlfcn.h>

namespace ks_test {

/// The host's own function behind a program's definition that stands in front of it.
template <class Function>
Function* hostFunction(Function* own) {
    Dl_info info{};
    dladdr(reinterpret_cast<const void*>(own), &info);
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, info.dli_sname));
}

}  // namespace ks_test
