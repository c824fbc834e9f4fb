#include <string_view>

#include "memory_host/orvex/objects/listing.h"
#include "python/native/define.h"
#include "python/native/values.h"
#include "workbench/json/json_object.h"

namespace ks_hmi_python {

using namespace workbench;

namespace {

void appendParameters(std::string& out, const std::vector<orvex::Parameter>& parameters) {
    appendJsonArray(out, parameters, [&](const orvex::Parameter& parameter) {
        JsonObject object(out);
        object.text("name", std::string_view(parameter.name)).text("type", std::string_view(parameter.type));
        object.truth("optional", parameter.isOptional).close();
    });
}

void appendCall(std::string& out, const orvex::CallListing& call) {
    JsonObject object(out);
    object.text("name", std::string_view(call.name)).text("sentence", std::string_view(call.sentence));
    object.truth("static", call.isStatic).truth("declared", call.isDeclared).name("inputs");
    appendParameters(out, call.inputs);
    object.name("outputs");
    appendParameters(out, call.outputs);
    object.close();
}

void appendProperty(std::string& out, const orvex::PropertyListing& property) {
    JsonObject object(out);
    object.text("name", std::string_view(property.name)).text("type", std::string_view(property.type));
    object.text("initial", std::string_view(property.initial)).truth("settable", property.isSettable);
    object.truth("computed", property.isComputed).truth("displayed", property.isDisplayed);
    object.text("sentence", std::string_view(property.sentence)).close();
}

std::string describeClass(const std::string& name) {
    const std::optional<orvex::ClassListing> found = orvex::listClass(name);
    if (!found) return "null";
    std::string out;
    JsonObject object(out);
    object.text("name", std::string_view(found->fullName)).text("superclass", std::string_view(found->superclass));
    object.truth("native", found->isNative).text("sentence", std::string_view(found->sentence)).name("properties");
    appendJsonArray(out, found->properties, [&](const auto& property) { appendProperty(out, property); });
    object.name("constructor");
    appendCall(out, found->constructor);
    object.name("methods");
    appendJsonArray(out, found->methods, [&](const auto& method) { appendCall(out, method); });
    object.close();
    return out;
}

std::string describeFunction(const std::string& name) {
    std::string out;
    if (const auto found = orvex::listFunction(name))
        appendCall(out, *found);
    else
        out = "null";
    return out;
}

}  // namespace

void bindListings(py::module_& module) {
    define(module, "namespaceNames", orvex::namespaceNames);
    define(module, "classNames", orvex::classNames);
    define(module, "functionNames", orvex::functionNames);
    define(module, "describeClass", describeClass);
    define(module, "describeFunction", describeFunction);
}

}  // namespace ks_hmi_python
