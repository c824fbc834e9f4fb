#include "workbench/unit/unit_library.h"

#include <fmt/format.h>

#include <dlfcn.h>

#include <string>

namespace workbench {

void UnitLibrary::Closer::operator()(void* library) const noexcept { ::dlclose(library); }

UnitLibrary::UnitLibrary(const std::string& path) : m_library(::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) {
    if (m_library) return;
    const char* const told = ::dlerror();
    const std::string reason = told != nullptr ? told : "unknown reason";
    const bool mayNotRun = reason.find("failed to map segment") != std::string::npos;
    throw UnitFailure("the unit's binary cannot be loaded: " + reason +
                      (mayNotRun ? "; if no program may run there, set TMPDIR to a folder where it may" : ""));
}

void* UnitLibrary::find(const char* name) const {
    void* const function = ::dlsym(m_library.get(), name);
    if (function == nullptr)
        throw UnitFailure(fmt::format("the unit's binary lacks the function {}, which the standard demands", name));
    return function;
}

}  // namespace workbench
