#pragma once

#include <string_view>

#include "host/api.h"
#include "memory_host/orvex/objects/script_class.h"

namespace orvex {

/// Native or scripted.
bool classExists(std::string_view fullName);

/// Makes the class known. Throws the host's exception when a class of that full name exists, native
/// or scripted, and when the superclass does not.
OX_API void defineScriptClass(ScriptClass definition);

/// Drops all namespaces, classes and info objects. A library's info objects are code of the library, so
/// a host that unloads one releases the object system first; afterwards it may be loaded anew.
OX_API void releaseObjectSystem();

}  // namespace orvex
