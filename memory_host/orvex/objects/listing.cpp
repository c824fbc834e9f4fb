#include "memory_host/orvex/objects/listing.h"

#include <algorithm>
#include <memory>
#include <span>
#include <utility>

#include "host/hv_array.h"
#include "memory_host/orvex/calls/function_table.h"
#include "memory_host/orvex/objects/cos_class.h"
#include "memory_host/orvex/objects/cos_namespace.h"
#include "memory_host/orvex/objects/dotted_name.h"
#include "memory_host/orvex/objects/notes_table.h"
#include "memory_host/orvex/objects/script_class_table.h"
#include "memory_host/orvex/objects/types.h"
#include "memory_host/orvex/values/short_text.h"
#include "memory_host/orvex/values/values.h"

namespace orvex {

namespace {

std::vector<std::string> sorted(std::vector<std::string> names) {
    std::sort(names.begin(), names.end());
    return names;
}

Parameter notedParameter(std::string_view text) {
    Parameter parameter;
    parameter.isOptional = text.starts_with('[');
    if (parameter.isOptional) text = text.substr(1, text.size() - 2);
    const std::size_t colon = text.find(": ");
    parameter.name = text.substr(0, colon);
    parameter.type = colon == std::string_view::npos ? "any" : text.substr(colon + 2);
    return parameter;
}

std::vector<Parameter> notedParameters(std::string_view text) {
    constexpr std::string_view kBetween = ", ";
    std::vector<Parameter> parameters;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(kBetween), text.size());
        parameters.push_back(notedParameter(text.substr(0, end)));
        text.remove_prefix(std::min(end + kBetween.size(), text.size()));
    }
    return parameters;
}

// The note on the member, or on that of the nearest superclass.
const Note* noteOn(std::string className, std::string_view member) {
    const Note* note = nullptr;
    while (!note && !className.empty()) {
        note = findNote(className + "." + std::string(member));
        const auto scripted = findScriptClass(className);
        className = scripted ? scripted->superclass : std::string();
    }
    return note;
}

std::string sentenceOf(const Note* note) { return note ? note->sentence : std::string(); }

// Without a note the inputs and outputs are not known.
CallListing notedCall(std::string_view name, const Note* note) {
    CallListing call;
    call.name = name;
    call.isDeclared = note != nullptr;
    if (!note) return call;
    call.inputs = notedParameters(note->inputs);
    call.outputs = notedParameters(note->outputs);
    call.sentence = note->sentence;
    return call;
}

// The names are those of the notes, types and number those of the signature.
std::vector<Parameter> declaredParameters(std::span<const hos::InternedName> types, std::vector<Parameter> noted) {
    noted.resize(types.size());
    for (std::size_t i = 0; i < types.size(); ++i) {
        noted[i].type = types[i].isEmpty() ? "any" : *types[i].text();
        noted[i].isOptional = false;
    }
    return noted;
}

void declare(CallListing& call, const hos::COSMethodInfo& method) {
    const hos::COSMethodSignature& signature = method.getSignature();
    call.inputs = declaredParameters(signature.inputTypes(), std::move(call.inputs));
    call.outputs = declaredParameters(signature.outputTypes(), std::move(call.outputs));
    const auto optional =
        std::min<std::size_t>(static_cast<std::size_t>(std::max(signature.optionalArguments(), 0)), call.inputs.size());
    for (Parameter& input : std::span(call.inputs).last(optional)) input.isOptional = true;
    call.isStatic = method.isStatic();
    call.isDeclared = true;
}

PropertyListing listProperty(const std::string& className, const hos::COSPropInfo& property) {
    const std::string& name = *property.getName().text();
    return {.name = name,
            .type = property.getType()->text(),
            .initial = {},
            .isSettable = property.getSetAccess() != hos::kReadOnlyAccess,
            .isComputed = property.isDependent(),
            .isDisplayed = property.isDisplayed(),
            .sentence = sentenceOf(noteOn(className, name))};
}

PropertyListing listProperty(const std::string& className, const ScriptProperty& property) {
    PropertyListing listing;
    listing.name = property.name;
    listing.type = "any";
    listing.isComputed = static_cast<bool>(property.computed);
    listing.isSettable = property.settable;
    listing.sentence = sentenceOf(noteOn(className, property.name));
    if (!listing.isComputed) listing.initial = shortText((property.initial ? property.initial() : makeEmpty()).get());
    return listing;
}

ClassListing namedClass(const std::string& fullName) {
    ClassListing listing;
    listing.fullName = fullName;
    listing.sentence = sentenceOf(findNote(fullName));
    const std::string name(lastPart(fullName));
    listing.constructor = notedCall(name, noteOn(fullName, name));
    return listing;
}

ClassListing list(const NativeClass& native) {
    ClassListing listing = namedClass(native.fullName());
    listing.isNative = true;
    if (const std::string_view own = native.info().getDescription(); !own.empty()) listing.sentence = own;
    for (const auto& property : native.properties())
        if (!property->isHidden()) listing.properties.push_back(listProperty(native.fullName(), *property));
    if (native.constructor()) declare(listing.constructor, *native.constructor());
    for (const auto& method : native.methods()) {
        if (method.get() == native.constructor() || !method->isVisible()) continue;
        const std::string& name = *method->getName().text();
        declare(listing.methods.emplace_back(notedCall(name, noteOn(native.fullName(), name))), *method);
    }
    return listing;
}

ClassListing list(const ScriptClass& scripted) {
    ClassListing listing = namedClass(scripted.fullName);
    listing.superclass = scripted.superclass;
    for (const ScriptProperty& property : scripted.properties)
        listing.properties.push_back(listProperty(scripted.fullName, property));
    for (const auto& method : scripted.methods)
        listing.methods.push_back(notedCall(method.first, noteOn(scripted.fullName, method.first)));
    for (const auto& method : scripted.staticMethods) {
        listing.methods.push_back(notedCall(method.first, noteOn(scripted.fullName, method.first)));
        listing.methods.back().isStatic = true;
    }
    return listing;
}

}  // namespace

std::vector<std::string> namespaceNames() {
    std::vector<std::string> names;
    for (const Namespace* one : allNamespaces()) names.push_back(one->fullName());
    return sorted(std::move(names));
}

std::vector<std::string> classNames() {
    std::vector<std::string> names = scriptClassNames();
    for (Namespace* one : allNamespaces())
        for (const auto& nativeClass : one->classes())
            if (!nativeClass->info().isHidden()) names.push_back(nativeClass->fullName());
    return sorted(std::move(names));
}

std::vector<std::string> functionNames() { return sorted(namesOfFunctions()); }

std::optional<ClassListing> listClass(std::string_view fullName) {
    if (const auto scripted = findScriptClass(fullName)) return list(*scripted);
    if (const auto native = findNativeClass(fullName)) return list(*native);
    return std::nullopt;
}

std::optional<CallListing> listFunction(std::string_view name) {
    const auto function = findFunction(name);
    if (!function) return std::nullopt;
    CallListing listing = notedCall(name, findNote(name));
    listing.isStatic = true;
    if (listing.outputs.empty() && function->outputs > 0)
        listing.outputs.assign(static_cast<std::size_t>(function->outputs), Parameter{{}, "any"});
    return listing;
}

}  // namespace orvex
