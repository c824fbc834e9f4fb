#include "memory_host/orvex/account/running_call.h"

#include <unordered_set>
#include <utility>

namespace orvex {

constinit int internal::g_callDepth = 0;

namespace {

constinit const std::string* g_runningFunction = nullptr;

const std::string* internedName(std::string_view name) {
    static auto& names = *new std::unordered_set<std::string>;
    return &*names.emplace(name).first;
}

}  // namespace

RunningCall::RunningCall(std::string_view functionName)
    : m_outerFunction(std::exchange(g_runningFunction, internedName(functionName))) {
    ++internal::g_callDepth;
}

RunningCall::~RunningCall() {
    --internal::g_callDepth;
    g_runningFunction = m_outerFunction;
}

const std::string* runningHostFunction() noexcept { return g_runningFunction; }

}  // namespace orvex
