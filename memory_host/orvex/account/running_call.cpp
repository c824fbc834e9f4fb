#include "memory_host/orvex/account/running_call.h"

#include <unordered_set>
#include <utility>

namespace orvex {
namespace {

constinit int g_depth = 0;
constinit const std::string* g_runningFunction = nullptr;

const std::string* internedName(std::string_view name) {
    static auto& names = *new std::unordered_set<std::string>;
    return &*names.emplace(name).first;
}

}  // namespace

RunningCall::RunningCall(std::string_view functionName)
    : m_outerFunction(std::exchange(g_runningFunction, internedName(functionName))) {
    ++g_depth;
}

RunningCall::~RunningCall() {
    --g_depth;
    g_runningFunction = m_outerFunction;
}

int hostCallDepth() noexcept { return g_depth; }

const std::string* runningHostFunction() noexcept { return g_runningFunction; }

}  // namespace orvex
