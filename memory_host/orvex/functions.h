#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/api.h"
#include "host/hv_array.h"

/// Host functions: what can be called by name. Thread: the interpreter thread only.
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

using HostFunction = std::function<void(Call&)>;

inline constexpr int kAnyNumberOfOutputs = -1;

/// A function that is registered for as long as this lives; then the name means again what it meant
/// before. Registrations of one name may end in any order.
class OX_API FunctionRegistration {
public:
    FunctionRegistration() noexcept = default;
    FunctionRegistration(std::string name, std::uint64_t number) noexcept;
    FunctionRegistration(FunctionRegistration&&) noexcept;
    FunctionRegistration& operator=(FunctionRegistration&&) noexcept;
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

/// Throws `kssvIException` with that literal text (UTF-8) under the catalogue "orvex:errors".
[[noreturn]] OX_API void raise(std::string key, std::string text);

/// Calls by name like `kssvFEVAL`, with owned results: `nOut` of them, at least one.
OX_API std::vector<HvArrayPtr> callByName(std::string_view name, std::span<const hvArray* const> ins, int nOut);

}  // namespace orvex
