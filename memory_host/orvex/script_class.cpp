#include "memory_host/orvex/script_class.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

#include "memory_host/orvex/cos_namespace.h"
#include "memory_host/orvex/hv_array_impl.h"

namespace orvex {

namespace {

struct TextHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const noexcept { return std::hash<std::string_view>()(text); }
};
using Classes = std::unordered_map<std::string, std::shared_ptr<const ScriptClass>, TextHash, std::equal_to<>>;

// Never destroyed: the classes' code may belong to libraries that are gone at the end of the process.
Classes& classes() {
    static auto& classes = *new Classes;
    return classes;
}

void inherit(ScriptClass& definition, const ScriptClass& base) {
    std::vector<ScriptProperty> properties = base.properties;
    for (ScriptProperty& own : definition.properties) {
        const auto isOwn = [&](const ScriptProperty& inherited) { return inherited.name == own.name; };
        std::erase_if(properties, isOwn);
        properties.push_back(std::move(own));
    }
    definition.properties = std::move(properties);
    definition.methods.insert(base.methods.begin(), base.methods.end());
    definition.staticMethods.insert(base.staticMethods.begin(), base.staticMethods.end());
}

}  // namespace

void defineScriptClass(ScriptClass definition) {
    if (classExists(definition.fullName))
        raise("NameExists", "The class " + definition.fullName + " is defined already; the first definition stays.");
    if (!definition.superclass.empty()) {
        const auto base = findScriptClass(definition.superclass);
        if (!base)
            raise("UnknownClass", "The superclass " + definition.superclass + " of " + definition.fullName +
                                      " is no class that is defined.");
        inherit(definition, *base);
    }
    std::string name = definition.fullName;
    classes().emplace(std::move(name), std::make_shared<const ScriptClass>(std::move(definition)));
}

std::shared_ptr<const ScriptClass> findScriptClass(std::string_view fullName) noexcept {
    const auto found = classes().find(fullName);
    return found == classes().end() ? nullptr : found->second;
}

void releaseScriptClasses() noexcept { classes().clear(); }

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
    m_values[slot] = HvArrayPtr(hvCreateSharedDataCopy(value));
}

void* ScriptObject::nativeInstance(std::string_view) const noexcept { return nullptr; }

std::vector<std::string> ScriptObject::propertyNames() const {
    std::vector<std::string> names;
    for (const ScriptProperty& property : m_class->properties)
        if (!property.computed) names.push_back(property.name);
    return names;
}

std::vector<std::string> ScriptObject::displayedProperties() const { return propertyNames(); }

void ScriptObject::store(std::string_view name, HvArrayPtr value) {
    if (value) hvSetArrayScope(value.get(), nullptr);
    m_values[slotOf(name)] = std::move(value);
}

const hvArray* ScriptObject::stored(std::string_view name) const { return m_values[slotOf(name)].get(); }

std::size_t ScriptObject::slotOf(std::string_view name) const {
    const auto& properties = m_class->properties;
    const auto hasName = [&](const ScriptProperty& property) { return property.name == name; };
    const auto found = std::find_if(properties.begin(), properties.end(), hasName);
    if (found == properties.end())
        raise("UnknownProperty", "There is no property \"" + std::string(name) + "\" of class " + className() + ".");
    return static_cast<std::size_t>(found - properties.begin());
}

HvArrayPtr constructScriptObject(const std::shared_ptr<const ScriptClass>& scriptClass,
                                 std::span<const hvArray* const> arguments) {
    const auto object = std::make_shared<ScriptObject>(scriptClass);
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
