#include "memory_host/orvex/local_scope.h"

#include <unordered_set>
#include <utility>

#include "host/services.h"
#include "memory_host/orvex/hv_array_impl.h"

namespace orvex {
namespace {

constinit int g_depth = 0;
constinit const std::string* g_runningFunction = nullptr;
constinit hvArray* g_newestInScope = nullptr;

const std::string* internedName(std::string_view name) {
    static auto& names = *new std::unordered_set<std::string>;
    return &*names.emplace(name).first;
}

bool isInScope(const hvArray* value) noexcept { return value->m_scopePrevious || value == g_newestInScope; }

void drain() noexcept {
    while (hvArray* const value = g_newestInScope) THvArrayDeleter::destroy(value);
}

}  // namespace

HostCall::HostCall(std::string_view functionName)
    : m_outerFunction(std::exchange(g_runningFunction, internedName(functionName))) {
    ++g_depth;
}

HostCall::~HostCall() {
    // Still running while it drains: what is released may call the host and register more.
    if (g_depth == 1) drain();
    --g_depth;
    g_runningFunction = m_outerFunction;
}

int hostCallDepth() noexcept { return g_depth; }

const std::string* runningHostFunction() noexcept { return g_runningFunction; }

void leaveLocalScope(hvArray* value) noexcept {
    if (!value || !isInScope(value)) return;
    (value->m_scopePrevious ? value->m_scopePrevious->m_scopeNext : g_newestInScope) = value->m_scopeNext;
    if (value->m_scopeNext) value->m_scopeNext->m_scopePrevious = value->m_scopePrevious;
    value->m_scopePrevious = value->m_scopeNext = nullptr;
}

}  // namespace orvex

void kssvSetLocalScope(hvArray* value) noexcept {
    using namespace orvex;
    if (!value || g_depth == 0 || value->m_isContained || isInScope(value)) return;
    value->m_scopeNext = g_newestInScope;
    if (g_newestInScope) g_newestInScope->m_scopePrevious = value;
    g_newestInScope = value;
}
