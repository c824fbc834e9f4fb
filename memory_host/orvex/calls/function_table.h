#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "memory_host/orvex/calls/call.h"

namespace orvex {

struct FunctionEntry {
    HostFunction function;
    int outputs;
    /// 0 for a definition, else the registration's number.
    std::uint64_t number = 0;
};

/// What the name means now, or null. Holding the entry keeps it callable when it is replaced.
std::shared_ptr<const FunctionEntry> findFunction(std::string_view name);
/// All names that mean a function now, in no order.
std::vector<std::string> namesOfFunctions();

}  // namespace orvex
