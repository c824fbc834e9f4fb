#include "workbench/unit/unit_library.h"

#include <fmt/format.h>

#include <dlfcn.h>

namespace workbench {

void UnitLibrary::Closer::operator()(void* library) const noexcept { ::dlclose(library); }

UnitLibrary::UnitLibrary(const std::string& path) : m_library(::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) {
    if (m_library) return;
    const char* const reason = ::dlerror();
    throw UnitFailure(std::string("the unit's binary cannot be loaded: ") +
                      (reason != nullptr ? reason : "unknown reason"));
}

void* UnitLibrary::find(const char* name) const {
    void* const function = ::dlsym(m_library.get(), name);
    if (function == nullptr)
        throw UnitFailure(fmt::format("the unit's binary lacks the function {}, which the standard demands", name));
    return function;
}

}  // namespace workbench
