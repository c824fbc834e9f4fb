#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "host/api.h"
#include "memory_host/orvex/calls/call.h"

/// Host functions: what can be called by name. Thread: the interpreter thread only.
namespace orvex {

inline constexpr int kAnyNumberOfOutputs = -1;  ///< The function itself says how many it has.

/// A function that is registered for as long as this lives; then the name means again what it meant
/// before. Registrations of one name may end in any order.
class OX_API FunctionRegistration {
public:
    FunctionRegistration() noexcept = default;
    FunctionRegistration(std::string name, std::uint64_t number) noexcept;  ///< What `registerFunction` makes.
    FunctionRegistration(FunctionRegistration&&) noexcept;                  ///< The other ends nothing.
    FunctionRegistration& operator=(FunctionRegistration&&) noexcept;       ///< Ends its own first.
    ~FunctionRegistration();

private:
    void end() noexcept;

    std::string m_name;
    std::uint64_t m_number = 0;
};

/// Registers a function over whatever had that name. A call that wants more outputs than `outputs` is
/// refused before the function sees it.
[[nodiscard]] OX_API FunctionRegistration registerFunction(std::string name, HostFunction function,
                                                           int outputs = kAnyNumberOfOutputs);
/// Defines a function until it is undefined; an earlier definition is replaced, and registrations stay
/// in front of it.
OX_API void defineFunction(std::string name, HostFunction function, int outputs = kAnyNumberOfOutputs);
/// Takes a definition back; a name without one is ignored.
OX_API void undefineFunction(std::string_view name) noexcept;

}  // namespace orvex
