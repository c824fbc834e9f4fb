#include "memory_host/orvex/account/local_scope.h"

#include "host/services.h"
#include "memory_host/orvex/values/hv_array_impl.h"

namespace orvex {
namespace {

constinit hvArray* g_newestInScope = nullptr;

bool isInScope(const hvArray* value) noexcept { return value->m_scopePrevious || value == g_newestInScope; }

void drain() noexcept {
    while (hvArray* const value = g_newestInScope) THvArrayDeleter::destroy(value);
}

}  // namespace

HostCall::HostCall(std::string_view functionName) : m_running(functionName) {}

HostCall::~HostCall() {
    // Still running while it drains: what is released may call the host and register more.
    if (hostCallDepth() == 1) drain();
}

void leaveLocalScope(hvArray* value) noexcept {
    if (!value || !isInScope(value)) return;
    (value->m_scopePrevious ? value->m_scopePrevious->m_scopeNext : g_newestInScope) = value->m_scopeNext;
    if (value->m_scopeNext) value->m_scopeNext->m_scopePrevious = value->m_scopePrevious;
    value->m_scopePrevious = value->m_scopeNext = nullptr;
}

}  // namespace orvex

void kssvSetLocalScope(hvArray* value) noexcept {
    using namespace orvex;
    if (!value || hostCallDepth() == 0 || value->m_isContained || isInScope(value)) return;
    value->m_scopeNext = g_newestInScope;
    if (g_newestInScope) g_newestInScope->m_scopePrevious = value;
    g_newestInScope = value;
}
