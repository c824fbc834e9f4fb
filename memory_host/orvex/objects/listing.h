#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/api.h"

/// What there is to make and to call, in one description for native and script classes. Reading it changes nothing, but
/// for loading what namespaces contain. All texts are UTF-8. Thread: the interpreter thread only.
namespace orvex {

/// One input or output.
struct Parameter {
    std::string name;         ///< as noted; empty where nobody says
    std::string type;         ///< as declared or noted, "any" where neither is
    bool isOptional = false;  ///< may be left out, with all behind it
};

/// One property of a class.
struct PropertyListing {
    std::string name;         ///< unique in the class
    std::string type;         ///< as declared; "any" in script classes
    std::string initial;      ///< the value of a new object, as displays show it; empty where only an object can tell
    bool isSettable = true;   ///< by assignment from a script
    bool isComputed = false;  ///< made at each reading
    bool isDisplayed = true;  ///< shown when the object is displayed
    std::string sentence;     ///< what it is for; empty where nobody says
};

/// One method, constructor or function.
struct CallListing {
    std::string name;                ///< without the class
    std::vector<Parameter> inputs;   ///< those of a method with the object itself in front
    std::vector<Parameter> outputs;  ///< in order
    bool isStatic = false;           ///< called as "Full.Class.name", without an object
    bool isDeclared = true;          ///< whether inputs and outputs are known, by a signature or a note
    std::string sentence;            ///< what it is for; empty where nobody says
};

/// One class.
struct ClassListing {
    std::string fullName;                     ///< dotted
    std::string superclass;                   ///< full name; empty without one. Its members are among these
    bool isNative = false;                    ///< described by a library, not by a script
    std::string sentence;                     ///< what its objects are; empty where nobody says
    std::vector<PropertyListing> properties;  ///< in the order shown; none that is hidden
    CallListing constructor;                  ///< called by the full name
    std::vector<CallListing> methods;         ///< none that is not visible
};

/// Full names of all namespaces, sorted. Script classes make none.
OX_API std::vector<std::string> namespaceNames();
/// Full names of all classes, native and scripted, sorted; none that is hidden.
OX_API std::vector<std::string> classNames();
/// Names of all host functions, sorted; no constructors and methods.
OX_API std::vector<std::string> functionNames();

/// The class of that full name; nothing when there is none.
OX_API std::optional<ClassListing> listClass(std::string_view fullName);
/// The function that the name means now, with a nameless output for each that nobody names; nothing when there is none.
OX_API std::optional<CallListing> listFunction(std::string_view name);

}  // namespace orvex
