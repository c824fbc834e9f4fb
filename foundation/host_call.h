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

}  // namespace detail

/// A call that may fail: a refusal becomes a host warning and gives nothing. Host exceptions that are
/// thrown all the same (misuse, exhausted memory) propagate.
template <std::size_t N>
std::optional<HostOutputs<N>> tryCallHost(const char* functionName, std::initializer_list<const hvArray*> inputs) {
    std::array<hvArray*, N> outputs{};
    kssvDiagnosticImpl* const refusal =
        kssvFEVAL_NoThrow(static_cast<int>(N), outputs.data(), static_cast<int>(inputs.size()), inputs.begin(),
                          functionName, true, nullptr);
    if (refusal != nullptr) {
        kssvReportAsWarning(refusal);
        return std::nullopt;
    }
    return detail::owned(outputs);
}

/// A call whose result is indispensable: a failure is thrown.
template <std::size_t N>
HostOutputs<N> callHost(const char* functionName, std::initializer_list<const hvArray*> inputs) {
    std::array<hvArray*, N> outputs{};
    kssvFEVAL(static_cast<int>(N), outputs.data(), static_cast<int>(inputs.size()), inputs.begin(), functionName);
    return detail::owned(outputs);
}

}  // namespace ks_hmi_foundation
