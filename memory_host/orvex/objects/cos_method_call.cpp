#include "memory_host/orvex/objects/cos_method_call.h"

#include <algorithm>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "memory_host/orvex/account/scope_of_value.h"
#include "memory_host/orvex/calls/errors.h"
#include "memory_host/orvex/objects/types.h"
#include "memory_host/orvex/values/hv_array_impl.h"

namespace orvex {

namespace {

// A method with the class it belongs to, as messages name it.
struct Callee {
    const NativeClass& owner;
    const hos::COSMethodInfo& method;

    const hos::COSMethodSignature& signature() const { return method.getSignature(); }
    bool isConstructor() const { return &method == owner.constructor(); }
    std::string text() const {
        if (isConstructor()) return "the constructor of class " + owner.fullName();
        return "method \"" + *method.getName().text() + "\" of class " + owner.fullName();
    }
};

void checkCounts(const Callee& callee, const Call& call) {
    const std::size_t most = callee.signature().inputTypes().size();
    const std::size_t least = most - std::min(most, static_cast<std::size_t>(callee.signature().optionalArguments()));
    const std::size_t outputs = callee.signature().outputTypes().size();
    const std::size_t given = call.ins.size();
    if (given < least)
        raise("TooFewInputs", "Too few arguments for " + callee.text() + ": " + std::to_string(given) +
                                  " given, at least " + std::to_string(least) + " needed.");
    if (given > most)
        raise("TooManyInputs", "Too many arguments for " + callee.text() + ": " + std::to_string(given) +
                                   " given, at most " + std::to_string(most) + " taken.");
    if (call.nOut > 0 && static_cast<std::size_t>(call.nOut) > outputs)
        raise("TooManyOutputs", "Too many outputs for " + callee.text() + ": " + std::to_string(call.nOut) +
                                    " asked for, at most " + std::to_string(outputs) + " returned.");
}

std::vector<hos::Argument> convertArguments(const Callee& callee, std::span<const hvArray* const> ins) {
    std::vector<hos::Argument> arguments;
    arguments.reserve(ins.size());
    for (std::size_t i = 0; i < ins.size(); ++i) {
        const hos::COSType& type = resolveType(callee.signature().inputTypes()[i]);
        std::optional<hos::Argument> converted = convertByType(type, ins[i]);
        if (!converted) refuseValue(type, ins[i], "Argument " + std::to_string(i + 1) + " of " + callee.text());
        arguments.push_back(std::move(*converted));
    }
    return arguments;
}

HvArrayPtr scopedLogical(bool truth) {
    HvArrayPtr value(hvCreateLogicalScalar(truth));
    hvSetArrayScope(value.get(), hvSCOPE_NONE);
    return value;
}

void requireScope(const Callee& callee, std::size_t position, const hvArray* result) {
    if (result->m_lifetime == Lifetime::scoped) return;
    reportScopeError("Result " + std::to_string(position + 1) + " of " + callee.text() +
                     " was handed back without a scope: " + result->line());
}

HvArrayPtr toHostValue(const Callee& callee, std::size_t position, hos::Result result) {
    if (const bool* truth = std::get_if<bool>(&result)) result = scopedLogical(*truth);
    HvArrayPtr* value = std::get_if<HvArrayPtr>(&result);
    if (!value) return nullptr;
    if (!*value) return HvArrayPtr(hvCreateNumericMatrix(0, 0, hvDOUBLE_CLASS, hvREAL));
    requireScope(callee, position, value->get());
    const hos::COSType& type = resolveType(callee.signature().outputTypes()[position]);
    if (!convertByType(type, value->get()))
        refuseValue(type, value->get(), "Result " + std::to_string(position + 1) + " of " + callee.text());
    return std::move(*value);
}

// `results` has a slot for every output of the call, and at least one.
void invoke(const Callee& callee, Call& call, std::vector<hos::Result>& results) {
    checkCounts(callee, call);
    const std::vector<hos::Argument> arguments = convertArguments(callee, call.ins);
    hos::Invocation invocation{
        .resultsWanted = call.nOut, .results = results, .resultCount = 0, .arguments = arguments};
    callee.method.invoke(invocation);
    const std::size_t filled =
        callee.isConstructor() ? 1 : static_cast<std::size_t>(std::max(invocation.resultCount, 0));
    const std::size_t count = std::min({filled, call.outs.size(), callee.signature().outputTypes().size()});
    for (std::size_t i = 0; i < count; ++i) call.outs[i] = toHostValue(callee, i, std::move(results[i]));
}

std::vector<hos::Result> slotsFor(const Call& call) {
    return std::vector<hos::Result>(std::max<std::size_t>(call.outs.size(), 1));
}

}  // namespace

void invokeNativeMethod(const NativeClass& owner, const hos::COSMethodInfo& method, Call& call) {
    std::vector<hos::Result> results = slotsFor(call);
    invoke({owner, method}, call, results);
}

void constructNativeObject(const std::shared_ptr<const NativeClass>& nativeClass, Call& call) {
    HvArrayPtr object(omCreateHOSScalar(std::make_shared<NativeObject>(nativeClass)));
    hvSetArrayScope(object.get(), hvSCOPE_NONE);
    const hos::COSMethodInfo* constructor = nativeClass->constructor();
    if (constructor) {
        std::vector<hos::Result> results = slotsFor(call);
        results.front() = std::move(object);
        invoke({*nativeClass, *constructor}, call, results);
        return;
    }
    if (!call.ins.empty() || call.nOut > 1)
        raise("TooManyInputs",
              "The constructor of class " + nativeClass->fullName() + " takes no arguments and gives one object.");
    call.outs[0] = std::move(object);
}

}  // namespace orvex
