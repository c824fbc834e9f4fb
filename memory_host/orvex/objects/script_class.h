#pragma once

#include <functional>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/api.h"
#include "host/hv_array.h"
#include "memory_host/orvex/calls/call.h"

/// Classes written on the host's side, as a script author would. They are found by their full dotted
/// name in a table of their own: defining one makes no namespace exist.
/// Thread: the interpreter thread only.
namespace orvex {

class ScriptObject;
/// One property of a script class.
struct ScriptProperty {
    std::string name;  ///< unique in the class
    /// Makes the value that an object has before any assignment; unset means a 0x0 double.
    std::function<HvArrayPtr()> initial = {};
    /// An assignment from a script to a property that is not settable is refused.
    bool settable = true;
    /// When set, reading calls it instead of answering what was assigned.
    std::function<HvArrayPtr(const ScriptObject&)> computed = {};
};
/// What a script class is made of.
struct ScriptClass {
    std::string fullName;  ///< dotted
    /// Full name of the class whose properties and methods this one has as well; may be empty. It
    /// must be defined already.
    std::string superclass;
    std::vector<ScriptProperty> properties;  ///< in the order shown
    /// Fills the new object from the constructor's arguments. Unset: the constructor takes none.
    std::function<void(ScriptObject& self, std::span<const hvArray* const> arguments)> construct;
    /// Called with the object as first input.
    std::map<std::string, HostFunction, std::less<>> methods;
    /// Called as "Full.Class.name".
    std::map<std::string, HostFunction, std::less<>> staticMethods;
};

/// The class with what it has from its superclasses, or null. Its objects keep it alive.
OX_API std::shared_ptr<const ScriptClass> findScriptClass(std::string_view fullName) noexcept;

}  // namespace orvex
