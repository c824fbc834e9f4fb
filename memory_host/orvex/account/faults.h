#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "host/api.h"
#include "host/hv_array.h"

/// Deterministic fault injection: every host operation that may fail passes one counting point.
/// Tests, look-ups, releasing, scopes, reporting and discarding cannot fail and do not count.
/// Thread: the interpreter thread only. The counting is not synchronised: while faults are injected, no other thread
/// converts text, which any thread may do at other times.
namespace orvex {
/// How an operation fails.
enum class FaultKind : std::uint8_t {
    refusal,      ///< a call by name fails as if the called function had: a diagnostic, or an exception where asked for
    exception,    ///< the operation throws `kssvIException`, a call by name also in its no-throw form
    outOfMemory,  ///< the operation throws `std::bad_alloc`
    emptyResult,  ///< a call by name or property read succeeds and yields 0x0 doubles
    nullResult,   ///< a call by name succeeds and yields null outputs
    wrongClass,   ///< a call by name or property read succeeds and yields 0x0 cell arrays
};

/// Which operation fails and how. A kind that the operation cannot have acts as `exception`.
struct FaultPlan {
    std::size_t failAt = 1;                 ///< 1-based
    bool andEverythingAfter = false;        ///< not that one alone
    FaultKind kind = FaultKind::exception;  ///< how it fails
};

/// Counts host operations while it lives, and makes those of its plan fail. The innermost one counts
/// and fails; the one outside it goes on when it ends. A fault inside a host function that is called
/// by name fails that function, as any error in it would.
class OX_API FaultInjection {
public:
    /// Counts only, so that a sweep can learn how many operations there are.
    FaultInjection() noexcept;
    explicit FaultInjection(const FaultPlan& plan) noexcept;  ///< Counts, and fails what `plan` says.
    FaultInjection(const FaultInjection&) = delete;
    FaultInjection& operator=(const FaultInjection&) = delete;
    ~FaultInjection();

    /// Operations that passed so far, failed ones included.
    std::size_t operations() const noexcept { return m_operations; }
    /// How many of them were made to fail.
    std::size_t fired() const noexcept { return m_fired; }

    /// Counts one operation; the kind of fault it is to suffer, if any.
    std::optional<FaultKind> count() noexcept;

private:
    std::optional<FaultPlan> m_plan;
    std::size_t m_operations = 0;
    std::size_t m_fired = 0;
    FaultInjection* m_outer;
};

namespace faults {
/// What is counted.
enum class Operation : std::uint8_t {
    createValue,
    copyValue,
    writeField,
    writeCell,
    readProperty,
    writeProperty,
    convertText,  ///< fails for want of memory only, whatever the kind
    readText,
    readScalar,
    callByName,
    createDiagnostic,
    createObject,
};

/// What an operation that passed its point has to do. Only `callByName` and `readProperty` are ever
/// told anything but to proceed, and only `callByName` to refuse or to yield nulls.
enum class Outcome : std::uint8_t { proceed, refuse, emptyResult, nullResult, wrongClass };

namespace internal {
OX_API extern FaultInjection* g_active;     ///< null while nothing is injected
OX_API Outcome count(Operation operation);  ///< As `point`, with an injection active.
}  // namespace internal

/// The counting point. Throws `kssvIException` or `std::bad_alloc` when the operation is to fail so.
inline Outcome point(Operation operation) { return internal::g_active ? internal::count(operation) : Outcome::proceed; }

/// What stands in for a result: a 0x0 double, a 0x0 cell array, or null.
OX_API HvArrayPtr substitute(Outcome outcome);

}  // namespace faults
}  // namespace orvex
