#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/api.h"
#include "host/hv_array.h"
#include "memory_host/orvex/objects/objects.h"
#include "memory_host/orvex/objects/script_class.h"

/// Objects of script classes. Thread: the interpreter thread only.
namespace orvex {

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
    /// The same for the property at that position in the class's list.
    void storeAt(std::size_t position, HvArrayPtr value) noexcept;
    /// What was last assigned, borrowed until the next assignment; null while it is the initial value.
    const hvArray* stored(std::string_view name) const;
    const ScriptClass& scriptClass() const noexcept { return *m_class; }  ///< Lives at least as long as this.

private:
    std::size_t slotOf(std::string_view name) const;

    std::shared_ptr<const ScriptClass> m_class;
    std::vector<HvArrayPtr> m_values;  ///< some have a share only in a value that a struct had; none is changed
};

/// Constructs an object of a script class as a script does, and wraps it as a 1x1 value.
OX_API HvArrayPtr constructScriptObject(const std::shared_ptr<const ScriptClass>& scriptClass,
                                        std::span<const hvArray* const> arguments);
/// The script object that is element 0 of a value, borrowed. Throws the host's exception when the value
/// is no object of that class.
OX_API ScriptObject& requireScriptObject(const hvArray* value, std::string_view fullClassName);

}  // namespace orvex
