#include "memory_host/orvex/objects/script_object.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include "memory_host/orvex/calls/errors.h"
#include "memory_host/orvex/values/hv_array_impl.h"

namespace orvex {

namespace {

// For each position among a class's properties the one that was asked for after it the last time, whatever the class:
// object after object is asked for the same ones in the same order.
constinit std::array<std::size_t, 32> g_slotAfter{};
constinit std::size_t g_lastSlot = 0;

std::optional<std::size_t> guessedSlot(const std::vector<ScriptProperty>& properties, std::string_view name) noexcept {
    const std::size_t guess = g_slotAfter[g_lastSlot];
    if (guess >= properties.size() || properties[guess].name != name) return std::nullopt;
    g_lastSlot = guess;
    return guess;
}

void rememberSlot(std::size_t slot) noexcept {
    if (slot < g_slotAfter.size()) g_lastSlot = g_slotAfter[g_lastSlot] = slot;
}

}  // namespace

ScriptObject::ScriptObject(std::shared_ptr<const ScriptClass> scriptClass)
    : COSObject("creating an object"), m_class(std::move(scriptClass)), m_values(m_class->properties.size()) {}

ScriptObject::~ScriptObject() = default;

const std::string& ScriptObject::className() const noexcept { return m_class->fullName; }

bool ScriptObject::isA(std::string_view fullClassName) const noexcept {
    if (fullClassName == className()) return true;
    for (std::string_view base = m_class->superclass; !base.empty();) {
        if (base == fullClassName) return true;
        const auto definition = findScriptClass(base);
        if (!definition) return false;
        base = definition->superclass;
    }
    return false;
}

HvArrayPtr ScriptObject::getProperty(std::string_view name) const {
    const std::size_t slot = slotOf(name);
    const ScriptProperty& property = m_class->properties[slot];
    if (property.computed) return property.computed(*this);
    if (m_values[slot]) return HvArrayPtr(hvCreateSharedDataCopy(m_values[slot].get()));
    return property.initial ? property.initial() : HvArrayPtr(hvCreateNumericMatrix(0, 0, hvDOUBLE_CLASS, hvREAL));
}

void ScriptObject::setProperty(std::string_view name, const hvArray* value) {
    const std::size_t slot = slotOf(name);
    const ScriptProperty& property = m_class->properties[slot];
    if (!property.settable || property.computed)
        raise("ReadOnlyProperty",
              "The property \"" + std::string(name) + "\" of class " + className() + " is read-only.");
    HvArrayPtr copy(hvCreateSharedDataCopy(value));
    hvSetArrayScope(copy.get(), nullptr);
    m_values[slot] = std::move(copy);
}

void* ScriptObject::nativeInstance(std::string_view) const noexcept { return nullptr; }

std::vector<std::string> ScriptObject::propertyNames() const {
    std::vector<std::string> names;
    for (const ScriptProperty& property : m_class->properties)
        if (!property.computed) names.push_back(property.name);
    return names;
}

std::vector<std::string> ScriptObject::displayedProperties() const { return propertyNames(); }

void ScriptObject::store(std::string_view name, HvArrayPtr value) { storeAt(slotOf(name), std::move(value)); }

void ScriptObject::storeAt(std::size_t position, HvArrayPtr value) noexcept {
    if (value) hvSetArrayScope(value.get(), nullptr);
    m_values[position] = std::move(value);
}

const hvArray* ScriptObject::stored(std::string_view name) const { return m_values[slotOf(name)].get(); }

std::size_t ScriptObject::slotOf(std::string_view name) const {
    const auto& properties = m_class->properties;
    if (const auto guess = guessedSlot(properties, name)) return *guess;
    const auto hasName = [&](const ScriptProperty& property) { return property.name == name; };
    const auto found = std::find_if(properties.begin(), properties.end(), hasName);
    if (found == properties.end())
        raise("UnknownProperty", "There is no property \"" + std::string(name) + "\" of class " + className() + ".");
    const auto slot = static_cast<std::size_t>(found - properties.begin());
    rememberSlot(slot);
    return slot;
}

HvArrayPtr constructScriptObject(const std::shared_ptr<const ScriptClass>& scriptClass,
                                 std::span<const hvArray* const> arguments) {
    const auto object = std::allocate_shared<ScriptObject>(SmallStorage<ScriptObject>(), scriptClass);
    if (scriptClass->construct)
        scriptClass->construct(*object, arguments);
    else if (!arguments.empty())
        raise("TooManyInputs", "The constructor of class " + scriptClass->fullName + " takes no arguments.");
    return HvArrayPtr(omCreateHOSScalar(object));
}

ScriptObject& requireScriptObject(const hvArray* value, std::string_view fullClassName) {
    const Objects* objects = objectsOf(value);
    auto* object = objects && objects->size() == 1 ? dynamic_cast<ScriptObject*>(objects->front().get()) : nullptr;
    if (!object || !object->isA(fullClassName))
        raise("TypeMismatch", "One object of class " + std::string(fullClassName) + " is needed, and " +
                                  describeValue(value) + " was given.");
    return *object;
}

}  // namespace orvex
