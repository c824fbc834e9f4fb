#pragma once

#include <string_view>

#include "host/hv_array.h"

/// What the values themselves tell the account of scopes; see local_scope.h. Thread: the interpreter thread only.
namespace orvex {

/// Takes a value out of any scope; null, and a value in a container, are ignored. Constant time.
void leaveScopes(hvArray* value) noexcept;
/// The same for a value that the running call, if any, gives to somebody: keeping it beyond the call needs a scope.
void handOut(hvArray* value) noexcept;
/// Reports a use of the value, which was left in a local scope that has ended.
void reportExpired(const hvArray* value) noexcept;
/// Lost when there is no memory for it.
void reportScopeError(std::string_view text) noexcept;

}  // namespace orvex
