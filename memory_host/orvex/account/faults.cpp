#include "memory_host/orvex/account/faults.h"

#include <array>
#include <new>
#include <string>
#include <utility>

#include "memory_host/orvex/calls/errors.h"
#include "memory_host/orvex/values/hv_array_impl.h"

namespace orvex {

FaultInjection::FaultInjection() noexcept : m_outer(std::exchange(faults::internal::g_active, this)) {}

FaultInjection::FaultInjection(const FaultPlan& plan) noexcept : FaultInjection() { m_plan = plan; }

FaultInjection::~FaultInjection() { faults::internal::g_active = m_outer; }

std::optional<FaultKind> FaultInjection::count() noexcept {
    ++m_operations;
    if (!m_plan || m_operations < m_plan->failAt) return std::nullopt;
    if (m_operations > m_plan->failAt && !m_plan->andEverythingAfter) return std::nullopt;
    ++m_fired;
    return m_plan->kind;
}

namespace faults {
namespace {

constexpr std::array kOperationNames{
    "creating a value",   "copying a value",    "writing a field",       "writing a cell",
    "reading a property", "writing a property", "converting text",       "reading text",
    "reading a scalar",   "calling by name",    "creating a diagnostic", "creating an object",
};

[[noreturn]] void fail(Operation operation, FaultKind kind) {
    if (kind == FaultKind::outOfMemory || operation == Operation::convertText) throw std::bad_alloc();
    raise("InjectedFault",
          std::string("A fault was injected while ") + kOperationNames[static_cast<std::size_t>(operation)] + ".");
}

}  // namespace

namespace internal {

constinit FaultInjection* g_active = nullptr;

Outcome count(Operation operation) {
    const std::optional<FaultKind> fault = g_active->count();
    if (!fault) return Outcome::proceed;
    const bool isCall = operation == Operation::callByName;
    const bool hasResult = isCall || operation == Operation::readProperty;
    if (isCall && *fault == FaultKind::refusal) return Outcome::refuse;
    if (isCall && *fault == FaultKind::nullResult) return Outcome::nullResult;
    if (hasResult && *fault == FaultKind::emptyResult) return Outcome::emptyResult;
    if (hasResult && *fault == FaultKind::wrongClass) return Outcome::wrongClass;
    fail(operation, *fault);
}

}  // namespace internal

HvArrayPtr substitute(Outcome outcome) {
    if (outcome == Outcome::emptyResult) return makeEmpty("an injected fault");
    if (outcome == Outcome::wrongClass)
        return makeValue(hvCELL_CLASS, Dimensions(0, 0), CellData{Children(0)}, "an injected fault");
    return nullptr;
}

}  // namespace faults
}  // namespace orvex
