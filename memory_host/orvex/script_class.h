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
#include "memory_host/orvex/functions.h"
#include "memory_host/orvex/objects.h"

/// Classes written on the host's side, as a script author would. They are found by their full dotted
/// name in a table of their own: defining one makes no namespace exist.
/// Thread: the interpreter thread only.
namespace orvex {

class ScriptObject;

struct ScriptProperty {
    std::string name;
    /// Makes the value that an object has before any assignment; unset means a 0x0 double.
    std::function<HvArrayPtr()> initial = {};
    /// An assignment from a script to a property that is not settable is refused.
    bool settable = true;
    /// When set, reading calls it instead of answering what was assigned.
    std::function<HvArrayPtr(const ScriptObject&)> computed = {};
};

struct ScriptClass {
    std::string fullName;
    /// Full name of the class whose properties and methods this one has as well; may be empty. It
    /// must be defined already.
    std::string superclass;
    std::vector<ScriptProperty> properties;
    /// Fills the new object from the constructor's arguments. Unset: the constructor takes none.
    std::function<void(ScriptObject& self, std::span<const hvArray* const> arguments)> construct;
    /// Called with the object as first input.
    std::map<std::string, HostFunction, std::less<>> methods;
    /// Called as "Full.Class.name".
    std::map<std::string, HostFunction, std::less<>> staticMethods;
};

/// Makes the class known. Throws the host's exception when a class of that full name exists, native
/// or scripted, and when the superclass does not.
OX_API void defineScriptClass(ScriptClass definition);
/// The class with what it has from its superclasses, or null. Its objects keep it alive.
OX_API std::shared_ptr<const ScriptClass> findScriptClass(std::string_view fullName) noexcept;
/// Forgets all script classes; they live on while objects of them do.
OX_API void releaseScriptClasses() noexcept;

/// An object of a script class: a handle to a bag of properties.
class OX_API ScriptObject final : public hos::COSObject {
public:
    /// An object with initial values; the constructor function is not called.
    explicit ScriptObject(std::shared_ptr<const ScriptClass> scriptClass);
    ~ScriptObject() override;

    const std::string& className() const noexcept override;
    bool isA(std::string_view fullClassName) const noexcept override;
    HvArrayPtr getProperty(std::string_view name) const override;
    /// As a script does it: a property that is not settable is refused.
    void setProperty(std::string_view name, const hvArray* value) override;
    void* nativeInstance(std::string_view fullClassName) const noexcept override;
    std::vector<std::string> propertyNames() const override;
    std::vector<std::string> displayedProperties() const override;

    /// As the class's own code does it: stores the value (null: back to the initial value) whether or
    /// not scripts may. Throws the host's exception when there is no such property.
    void store(std::string_view name, HvArrayPtr value);
    /// What was last assigned, borrowed until the next assignment; null while it is the initial value.
    const hvArray* stored(std::string_view name) const;
    const ScriptClass& scriptClass() const noexcept { return *m_class; }

private:
    std::size_t slotOf(std::string_view name) const;

    std::shared_ptr<const ScriptClass> m_class;
    std::vector<HvArrayPtr> m_values;
};

/// Constructs an object of a script class as a script does, and wraps it as a 1x1 value.
OX_API HvArrayPtr constructScriptObject(const std::shared_ptr<const ScriptClass>& scriptClass,
                                        std::span<const hvArray* const> arguments);
/// The script object that is element 0 of a value, borrowed. Throws the host's exception when the value
/// is no object of that class.
OX_API ScriptObject& requireScriptObject(const hvArray* value, std::string_view fullClassName);

}  // namespace orvex
