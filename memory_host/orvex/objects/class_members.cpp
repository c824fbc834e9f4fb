#include "memory_host/orvex/objects/class_members.h"

#include <memory>

#include "memory_host/orvex/objects/cos_method_call.h"
#include "memory_host/orvex/objects/cos_namespace.h"
#include "memory_host/orvex/objects/script_object.h"
#include "memory_host/orvex/values/hv_array_impl.h"

namespace orvex {

namespace {

bool construct(std::string_view className, Call& call) {
    if (const auto scriptClass = findScriptClass(className)) {
        call.outs[0] = constructScriptObject(scriptClass, call.ins);
        return true;
    }
    const auto nativeClass = findNativeClass(className);
    if (!nativeClass) return false;
    constructNativeObject(nativeClass, call);
    return true;
}

bool invokeStaticMethod(std::string_view name, Call& call) {
    const std::size_t dot = name.rfind('.');
    const std::string_view className = name.substr(0, dot);
    const std::string_view methodName = name.substr(dot + 1);
    if (const auto scriptClass = findScriptClass(className)) {
        const auto method = scriptClass->staticMethods.find(methodName);
        if (method == scriptClass->staticMethods.end()) return false;
        method->second(call);
        return true;
    }
    const auto nativeClass = findNativeClass(className);
    const hos::COSMethodInfo* method = nativeClass ? nativeClass->findMethod(methodName) : nullptr;
    if (!method || !method->isStatic()) return false;
    invokeNativeMethod(*nativeClass, *method, call);
    return true;
}

bool invokeMethod(std::string_view name, Call& call) {
    const Objects* objects = call.ins.empty() ? nullptr : objectsOf(call.ins.front());
    if (!objects || objects->empty()) return false;
    const hos::ObjectInterface self = objects->front();
    if (const auto* scripted = dynamic_cast<const ScriptObject*>(self.get())) {
        const auto& methods = scripted->scriptClass().methods;
        const auto method = methods.find(name);
        if (method == methods.end()) return false;
        method->second(call);
        return true;
    }
    const auto* native = dynamic_cast<const NativeObject*>(self.get());
    const hos::COSMethodInfo* method = native ? native->nativeClass().findMethod(name) : nullptr;
    if (!method || method->isStatic()) return false;
    invokeNativeMethod(native->nativeClass(), *method, call);
    return true;
}

}  // namespace

bool invokeClassMember(std::string_view name, Call& call) {
    const bool isDotted = name.find('.') != std::string_view::npos;
    if (isDotted && (construct(name, call) || invokeStaticMethod(name, call))) return true;
    return invokeMethod(name, call);
}

}  // namespace orvex
