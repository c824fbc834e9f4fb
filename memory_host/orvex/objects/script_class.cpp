#include "memory_host/orvex/objects/script_class.h"
#include "memory_host/orvex/objects/script_class_table.h"

#include <functional>
#include <unordered_map>
#include <utility>

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

}  // namespace

void addScriptClass(ScriptClass definition) {
    std::string name = definition.fullName;
    classes().emplace(std::move(name), std::make_shared<const ScriptClass>(std::move(definition)));
}

std::shared_ptr<const ScriptClass> findScriptClass(std::string_view fullName) noexcept {
    const auto found = classes().find(fullName);
    return found == classes().end() ? nullptr : found->second;
}

std::vector<std::string> scriptClassNames() {
    std::vector<std::string> names;
    for (const auto& entry : classes()) names.push_back(entry.first);
    return names;
}

void releaseScriptClasses() noexcept { classes().clear(); }

}  // namespace orvex
