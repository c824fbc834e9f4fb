#pragma once

#include <memory>

#include "host/object_system.h"
#include "memory_host/orvex/calls/call.h"
#include "memory_host/orvex/objects/cos_class.h"

namespace orvex {

/// Calls a method of a native class: checks the number of arguments and outputs, converts the
/// arguments by their declared types, checks the results by theirs. A result that is null (no object
/// came of it) reaches the caller as a 0x0 double.
void invokeNativeMethod(const NativeClass& owner, const hos::COSMethodInfo& method, Call& call);

/// Makes an object with its instance and calls the class's constructor, where it has one, on it.
void constructNativeObject(const std::shared_ptr<const NativeClass>& nativeClass, Call& call);

}  // namespace orvex
