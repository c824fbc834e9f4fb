#pragma once

#include <string_view>

#include "host/api.h"
#include "memory_host/orvex/functions.h"

namespace orvex {

/// Calls the class constructor of that full dotted name, else the static method
/// "Namespace.Class.method", else the method of the first argument's class. False when nothing has
/// that name; failures of the call itself are thrown.
bool invokeClassMember(std::string_view name, Call& call);

/// Drops all namespaces, classes and info objects. A library's info objects are code of the library, so
/// a host that unloads one releases the object system first; afterwards it may be loaded anew.
OX_API void releaseObjectSystem();

}  // namespace orvex
