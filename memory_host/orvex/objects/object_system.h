#pragma once

#include <string_view>

#include "host/api.h"
#include "memory_host/orvex/objects/script_class.h"

namespace orvex {

/// Native or scripted.
OX_API bool classExists(std::string_view fullName);

/// Makes the class known. Throws the host's exception when a class of that full name exists, native
/// or scripted, and when the superclass does not.
OX_API void defineScriptClass(ScriptClass definition);

/// Drops all namespaces, classes and info objects, and the libraries that they came from: those stay loaded until then,
/// also when whoever loaded them has closed them. Afterwards a library may be loaded and initialised anew.
OX_API void releaseObjectSystem();

}  // namespace orvex
