#pragma once

#include <string>

#include "host/api.h"

namespace orvex {

/// A library that is loaded into the host and initialised, as the environment does it. What it registered is code of
/// the library, which therefore stays in memory until the object system is released (`releaseObjectSystem`), and its
/// second initialisation before that does nothing. Objects of its classes must be gone by then.
class OX_API LoadedLibrary {
public:
    LoadedLibrary() noexcept = default;
    /// Loads `pathOrSoname` (libNAME.so, with or without a version behind) and calls its
    /// `OXInitialize_NAME`. Throws `kssvIException` naming the file and what is missing when it cannot
    /// be loaded or has no such entry point. A failure of the entry point is thrown as `kssvIException`
    /// (want of memory as `std::bad_alloc`). The library is closed again in every such case.
    explicit LoadedLibrary(const std::string& pathOrSoname);
    LoadedLibrary(LoadedLibrary&&) noexcept;             ///< The other holds none.
    LoadedLibrary& operator=(LoadedLibrary&&) noexcept;  ///< Unloads its own first.
    ~LoadedLibrary();

    bool isLoaded() const noexcept { return m_handle != nullptr; }  ///< Whether it holds one.
    /// "NAME".
    const std::string& name() const noexcept { return m_name; }
    /// Address of an exported symbol, or null.
    void* symbol(const char* symbolName) const noexcept;
    /// Calls `OXTerminate_NAME` where there is one and closes the library. Does nothing the second time.
    void unload() noexcept;

private:
    std::string m_name;
    void* m_handle = nullptr;
};

}  // namespace orvex
