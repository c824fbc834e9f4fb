#pragma once

#include <string_view>

#include "host/api.h"
#include "host/hv_array.h"
#include "memory_host/orvex/account/running_call.h"

/// Running host calls and the local scope: values that are released when the outermost call ends.
/// Thread: the interpreter thread only.
namespace orvex {

/// A host call that runs while this lives. The end of the outermost one releases the values that were
/// registered with the local scope and are still in it, also those registered while it does so.
class OX_API HostCall {
public:
    explicit HostCall(std::string_view functionName);
    HostCall(const HostCall&) = delete;
    HostCall& operator=(const HostCall&) = delete;
    ~HostCall();

private:
    RunningCall m_running;
};

/// Takes a value out of the local scope; null, and a value that is in none, are ignored. Constant time.
OX_API void leaveLocalScope(hvArray* value) noexcept;

}  // namespace orvex
