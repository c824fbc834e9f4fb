#include "memory_host/orvex/objects/object_system.h"

#include <string>
#include <utility>
#include <vector>

#include "memory_host/orvex/calls/errors.h"
#include "memory_host/orvex/objects/cos_namespace.h"
#include "memory_host/orvex/objects/notes_table.h"
#include "memory_host/orvex/objects/pinned_libraries.h"
#include "memory_host/orvex/objects/script_class_table.h"

namespace orvex {

namespace {

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

bool classExists(std::string_view fullName) { return findScriptClass(fullName) || findNativeClass(fullName); }

void defineScriptClass(ScriptClass definition) {
    if (classExists(definition.fullName))
        raise("NameExists", "The class " + definition.fullName + " is defined already; the first definition stays.");
    if (!definition.superclass.empty()) {
        const auto base = findScriptClass(definition.superclass);
        if (!base)
            raise("UnknownClass",
                  "The superclass " + definition.superclass + " of " + definition.fullName + " is not defined.");
        inherit(definition, *base);
    }
    addScriptClass(std::move(definition));
}

void releaseObjectSystem() {
    releaseNamespaces();
    releaseScriptClasses();
    releaseNotes();
    releaseLibraries();
}

}  // namespace orvex
