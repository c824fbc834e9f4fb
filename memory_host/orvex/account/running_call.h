#pragma once

#include <string>
#include <string_view>

#include "host/api.h"

/// What is being called by name just now. Thread: the interpreter thread only.
namespace orvex {

namespace internal {
OX_API extern int g_callDepth;                       ///< what `hostCallDepth` answers
OX_API extern const std::string* g_runningFunction;  ///< what `runningHostFunction` answers
}  // namespace internal

/// A call that runs while this lives.
class OX_API RunningCall {
public:
    explicit RunningCall(std::string_view functionName);  ///< Of the function of that name, for messages.
    RunningCall(const RunningCall&) = delete;
    RunningCall& operator=(const RunningCall&) = delete;
    ~RunningCall();

private:
    const std::string* m_outerFunction;
};

/// How many host calls run inside one another.
inline int hostCallDepth() noexcept { return internal::g_callDepth; }
/// The function that is being called by name, innermost; null when none is. The text lives as long as
/// the process.
inline const std::string* runningHostFunction() noexcept { return internal::g_runningFunction; }

}  // namespace orvex
