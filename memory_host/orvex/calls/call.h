#pragma once

#include <functional>
#include <span>
#include <string_view>

#include "host/hv_array.h"

namespace orvex {

/// One call of a host function.
struct Call {
    /// How many outputs the caller wants.
    int nOut = 0;
    /// One slot for each output wanted, and at least one: a function may always give its first output.
    /// What is left null reaches the caller as null.
    std::span<HvArrayPtr> outs;
    /// Borrowed, never null; objects in them live until the call ends.
    std::span<const hvArray* const> ins;
    /// The name that was called.
    std::string_view name;
};

using HostFunction = std::function<void(Call&)>;  ///< Fills the call's outputs; what it throws fails the call.

}  // namespace orvex
