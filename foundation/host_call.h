#pragma once

#include <array>
#include <cstddef>
#include <initializer_list>
#include <optional>

#include "host/hv_array.h"
#include "host/services.h"

/// Calling the host by name. Inputs are borrowed, outputs owned; an output may be null.
namespace ks_hmi_foundation {

template <std::size_t N>
using HostOutputs = std::array<HvArrayPtr, N>;

namespace detail {

template <std::size_t N>
HostOutputs<N> owned(const std::array<hvArray*, N>& values) noexcept {
    HostOutputs<N> outputs;
    for (std::size_t i = 0; i < N; ++i) outputs[i].reset(values[i]);
    return outputs;
}

/// The one way in which the library calls what may refuse; `consume` disposes of the refusal.
template <std::size_t N>
std::optional<HostOutputs<N>> attempt(const char* functionName, std::initializer_list<const hvArray*> inputs,
                                      void (*consume)(kssvDiagnosticImpl*) noexcept) {
    std::array<hvArray*, N> outputs{};
    kssvDiagnosticImpl* const refusal =
        kssvFEVAL_NoThrow(static_cast<int>(N), outputs.data(), static_cast<int>(inputs.size()), inputs.begin(),
                          functionName, true, nullptr);
    if (refusal == nullptr) return owned(outputs);
    consume(refusal);
    return std::nullopt;
}

}  // namespace detail

/// A call that may fail: a refusal becomes a host warning and gives nothing. Host exceptions that are
/// thrown all the same (misuse, exhausted memory) propagate.
template <std::size_t N>
std::optional<HostOutputs<N>> tryCallHost(const char* functionName, std::initializer_list<const hvArray*> inputs) {
    return detail::attempt<N>(functionName, inputs, &kssvReportAsWarning);
}

/// The same without a warning.
template <std::size_t N>
std::optional<HostOutputs<N>> tryCallHostSilently(const char* functionName,
                                                  std::initializer_list<const hvArray*> inputs) {
    return detail::attempt<N>(functionName, inputs, &kssvDiscardDiagnostic);
}

/// A call whose result is indispensable: a failure is thrown.
template <std::size_t N>
HostOutputs<N> callHost(const char* functionName, std::initializer_list<const hvArray*> inputs) {
    std::array<hvArray*, N> outputs{};
    kssvFEVAL(static_cast<int>(N), outputs.data(), static_cast<int>(inputs.size()), inputs.begin(), functionName);
    return detail::owned(outputs);
}

}  // namespace ks_hmi_foundation
