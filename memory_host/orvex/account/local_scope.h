#pragma once

#include <string_view>

#include "host/api.h"
#include "memory_host/orvex/account/running_call.h"

/// Running host calls and what becomes of values at their end.
///
/// The end of the outermost call ends the local scope: values that are still in it are gone. Whoever holds on to one
/// finds a value of no class and no elements, called "expired" in messages; releasing it is a scope error. A value that
/// was made or handed out while a call ran, and that somebody keeps by itself (in no container), must have been given a
/// scope by then: without one it lives on, and is a scope error. Values made outside any call are their owner's affair.
/// Thread: the interpreter thread only.
namespace orvex {

/// A host call that runs while this lives.
class OX_API HostCall {
public:
    explicit HostCall(std::string_view functionName);  ///< Of the function of that name, for messages.
    HostCall(const HostCall&) = delete;
    HostCall& operator=(const HostCall&) = delete;
    ~HostCall();

private:
    RunningCall m_running;
};

}  // namespace orvex
