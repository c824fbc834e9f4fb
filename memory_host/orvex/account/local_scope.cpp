#include "memory_host/orvex/account/local_scope.h"

#include <array>
#include <memory>
#include <string>
#include <utility>

#include "host/services.h"
#include "memory_host/orvex/account/scope_of_value.h"
#include "memory_host/orvex/values/hv_array_impl.h"

namespace orvex {
namespace {

constinit hvArray* g_local = nullptr;
// Made or handed out while a call runs, in no container and without a scope.
constinit hvArray* g_loose = nullptr;

void enter(hvArray*& list, hvArray* value, Lifetime lifetime) noexcept {
    value->m_lifetime = lifetime;
    value->m_next = list;
    value->m_place = &list;
    if (list) list->m_place = &value->m_next;
    list = value;
}

// Keeps the shells of the last expired values, so that a late use of one is told from any other fault.
void bury(hvArray* value) noexcept {
    static auto& graves = *new std::array<std::unique_ptr<hvArray>, 64>;
    static std::size_t next = 0;
    graves[next].reset(value);
    next = (next + 1) % graves.size();
}

void expire(hvArray* value) noexcept {
    leaveScopes(value);
    // A running call still holds it: its end is the value's.
    if (value->m_owners > 1) return intrusive_ptr_release(value);
    value->m_lifetime = Lifetime::expired;
    value->m_class = hvUNKNOWN_CLASS;
    value->m_dimensions = Dimensions(0, 0);
    value->strike();
    const Payload contents = std::exchange(value->m_payload, CellData{Children(0)});
    bury(value);
}

void report(const hvArray* value, const char* what) noexcept {
    try {
        reportScopeError(what + value->line());
    } catch (...) {
        reportScopeError(what);
    }
}

void endScopes() noexcept {
    while (g_local) expire(g_local);
    while (g_loose) {
        report(g_loose, "A value was kept beyond the host call, and was given no scope: ");
        leaveScopes(g_loose);
    }
}

}  // namespace

HostCall::HostCall(std::string_view functionName) : m_running(functionName) {}

HostCall::~HostCall() {
    // Still running while they end: what is released may call the host and register more.
    if (hostCallDepth() == 1) endScopes();
}

void leaveScopes(hvArray* value) noexcept {
    if (!value || !value->m_place) return;
    *value->m_place = value->m_next;
    if (value->m_next) value->m_next->m_place = value->m_place;
    value->m_place = nullptr;
    value->m_next = nullptr;
    value->m_lifetime = Lifetime::owned;
}

void handOut(hvArray* value) noexcept {
    if (!value || value->m_lifetime == Lifetime::expired) return;
    if (value->m_place) leaveScopes(value);
    value->m_lifetime = Lifetime::owned;
    if (hostCallDepth() > 0) enter(g_loose, value, Lifetime::loose);
}

void reportExpired(const hvArray* value) noexcept {
    report(value, "A value was used after the local scope that it was left in had ended: ");
}

}  // namespace orvex

void kssvSetLocalScope(hvArray* value) noexcept {
    using namespace orvex;
    const bool canEnter = value && hostCallDepth() > 0 && value->m_lifetime != Lifetime::contained &&
                          value->m_lifetime != Lifetime::expired;
    if (!canEnter) return;
    leaveScopes(value);
    enter(g_local, value, Lifetime::local);
}
