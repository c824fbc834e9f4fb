#pragma once

#include <string>
#include <string_view>

#include "host/api.h"
#include "host/hv_array.h"

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
    const std::string* m_outerFunction;
};

/// How many host calls run inside one another.
OX_API int hostCallDepth() noexcept;
/// The function that is being called by name, innermost; null when none is. The text lives as long as
/// the process.
OX_API const std::string* runningHostFunction() noexcept;
/// Takes a value out of the local scope; null, and a value that is in none, are ignored. Constant time.
OX_API void leaveLocalScope(hvArray* value) noexcept;

}  // namespace orvex
