#pragma once

#include <functional>
#include <span>
#include <string>
#include <vector>

#include "host/api.h"
#include "host/hv_array.h"
#include "host/object_system.h"

/// The smallest platform that the library runs on: values with one layout, functions by name, and as much of an
/// object system as registers the library's classes and makes their objects.
namespace smallest_platform {

/// A host function: takes borrowed inputs, gives owned outputs.
using Function = std::function<std::vector<HvArrayPtr>(std::span<const hvArray* const> inputs)>;

/// Makes the function callable by name; one of the same name is replaced.
OX_API void defineFunction(std::string name, Function function);

/// Makes a class of plain records: its constructor takes a 1x1 struct, whose fields become the properties, beside
/// those named here, which start as a 0x0 double.
OX_API void defineRecordClass(const std::string& fullName, std::vector<std::string> furtherProperties);

/// Throws the host's exception with that text.
[[noreturn]] void raise(const std::string& text);

/// Calls by name; a failure is thrown.
OX_API std::vector<HvArrayPtr> call(const std::string& name, std::span<const hvArray* const> inputs);

/// The class that a library registered under that full name, or null.
const hos::COSClassInfo* findClass(const std::string& fullName);

/// A new object of a library's class, with the instance that its info object creates.
HvArrayPtr makeNativeObject(const std::string& fullName, const hos::COSClassInfo& info);

/// Takes the value out of the local scope, where it is in it.
void leaveLocalScope(const hvArray* value) noexcept;

}  // namespace smallest_platform
