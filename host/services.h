#pragma once

#include <string>

#include "host/api.h"
#include "host/hv_array.h"
#include "host/messages.h"

/// The services layer: calling the host by name, diagnostics, the local scope.
/// Thread: the host's interpreter thread only.

/// A record of a failure (message identifier, text, cause). Consumed exactly once, by reporting,
/// throwing or discarding it; the consumer consumes it in every case.
class kssvDiagnosticImpl;

/// Calls the host function, class constructor or method of that name: host functions first, then
/// class constructors, static methods, methods of the first argument's class. Fills `outs` with
/// `nOut` values that the caller owns; an output that the function did not assign is null.
/// A failure is thrown as `kssvIException`; `outs` is then unchanged. Inputs stay the caller's.
OX_API void kssvFEVAL(int nOut, hvArray** outs, int nIn, const hvArray* const* ins, const char* functionName);

/// The same, but a failure of the call is returned instead of thrown; null means success, and only
/// then are the outputs valid. The last two arguments are always true and null.
/// Misuse and exhausted memory are still thrown.
OX_API kssvDiagnosticImpl* kssvFEVAL_NoThrow(int nOut, hvArray** outs, int nIn, const hvArray* const* ins,
                                             const char* functionName, bool captureErrors, void* reserved);
/// The second form, with a context (always null). The platform declares both; the library calls the first.
OX_API kssvDiagnosticImpl* kssvFEVAL_NoThrow(int nOut, hvArray** outs, int nIn, const hvArray* const* ins,
                                             const char* functionName, void* context, bool captureErrors,
                                             void* reserved);

/// Shows the diagnostic to the user as a host warning and consumes it.
OX_API void kssvReportAsWarning(kssvDiagnosticImpl* diagnostic) noexcept;
/// Drops the diagnostic silently.
OX_API void kssvDiscardDiagnostic(kssvDiagnosticImpl* diagnostic) noexcept;
/// A diagnostic for the identifier, with an optional text that replaces the catalogue's.
OX_API kssvDiagnosticImpl* kssvCreateDiagnostic(const resource_core::BaseMsgID& id, const std::string& text);
/// A diagnostic for the exception being handled; to be called from a catch clause only.
OX_API kssvDiagnosticImpl* kssvCreateDiagnosticFromCatchClause();
/// Throws the diagnostic as `kssvIException`; never returns. The second argument is always null.
OX_API void kssvThrowIExceptionFromDiagnostic(kssvDiagnosticImpl* diagnostic, void* reserved);

/// Registers a value with the current host call: it is released when the outermost host call ends,
/// unless it is released, handed over or given a scope before. With no host call running nothing is
/// ever released, so a caller holds the value itself as well.
OX_API void kssvSetLocalScope(hvArray* value) noexcept;

/// Releases storage that was allocated with `calloc` for an object handed to the host.
OX_API void utFree(void* storage) noexcept;
