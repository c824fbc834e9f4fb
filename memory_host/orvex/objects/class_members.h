#pragma once

#include <string_view>

#include "memory_host/orvex/calls/call.h"

namespace orvex {

/// Calls the class constructor of that full dotted name, else the static method
/// "Namespace.Class.method", else the method of the first argument's class. False when nothing has
/// that name; failures of the call itself are thrown.
bool invokeClassMember(std::string_view name, Call& call);

}  // namespace orvex
