#include "memory_host/orvex/calls/library_loader.h"

#include <dlfcn.h>

#include <filesystem>
#include <new>
#include <utility>

#include "host/messages.h"
#include "memory_host/orvex/calls/errors.h"

namespace orvex {
namespace {

using EntryPoint = void (*)();

// NAME of ".../libNAME.so[.version]"; empty for a file of another name.
std::string stemOf(const std::string& path) {
    const std::string file = std::filesystem::path(path).filename().string();
    const std::size_t end = file.find(".so");
    const bool isLibrary = file.starts_with("lib") && end != std::string::npos && end > 3;
    return isLibrary ? file.substr(3, end - 3) : std::string();
}

EntryPoint entryPoint(void* handle, const std::string& symbol) noexcept {
    return reinterpret_cast<EntryPoint>(dlsym(handle, symbol.c_str()));
}

void initialize(void* handle, const std::string& path, const std::string& symbol) {
    const EntryPoint entry = entryPoint(handle, symbol);
    if (!entry) raise("LibraryNotLoaded", "The library \"" + path + "\" does not export \"" + symbol + "\".");
    // Exceptions of the library's own types may not outlive it, so none of its passes: each becomes one of the host's.
    try {
        entry();
    } catch (const kssvIException& failure) {
        throw kssvIException(failure);
    } catch (const std::bad_alloc&) {
        throw std::bad_alloc();
    } catch (const std::exception& failure) {
        raise("LibraryNotLoaded", "The library \"" + path + "\" cannot start: " + failure.what());
    } catch (...) {
        raise("LibraryNotLoaded", "The library \"" + path + "\" cannot start.");
    }
}

}  // namespace

LoadedLibrary::LoadedLibrary(const std::string& pathOrSoname) : m_name(stemOf(pathOrSoname)) {
    if (m_name.empty())
        raise("LibraryNotLoaded",
              "\"" + pathOrSoname + "\" is not a library file name; it must have the form libNAME.so.");
    void* const handle = dlopen(pathOrSoname.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!handle) {
        const char* reason = dlerror();
        raise("LibraryNotLoaded",
              "The library \"" + pathOrSoname + "\" cannot be loaded: " + (reason ? reason : "unknown reason"));
    }
    try {
        initialize(handle, pathOrSoname, "OXInitialize_" + m_name);
    } catch (...) {
        dlclose(handle);
        throw;
    }
    m_handle = handle;
}

LoadedLibrary::LoadedLibrary(LoadedLibrary&& other) noexcept
    : m_name(std::move(other.m_name)), m_handle(std::exchange(other.m_handle, nullptr)) {}

LoadedLibrary& LoadedLibrary::operator=(LoadedLibrary&& other) noexcept {
    if (this == &other) return *this;
    unload();
    m_name = std::move(other.m_name);
    m_handle = std::exchange(other.m_handle, nullptr);
    return *this;
}

LoadedLibrary::~LoadedLibrary() { unload(); }

void* LoadedLibrary::symbol(const char* symbolName) const noexcept {
    return m_handle && symbolName ? dlsym(m_handle, symbolName) : nullptr;
}

void LoadedLibrary::unload() noexcept {
    void* const handle = std::exchange(m_handle, nullptr);
    if (!handle) return;
    if (const EntryPoint terminate = entryPoint(handle, "OXTerminate_" + m_name)) terminate();
    dlclose(handle);
}

}  // namespace orvex
