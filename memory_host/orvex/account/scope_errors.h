#pragma once

#include <string>
#include <vector>

#include "host/api.h"

/// What was done against the rules of scopes: a value kept beyond the outermost host call, or handed back by a method,
/// without a scope; a value used after the local scope that it was left in had ended. Each goes well here, and would
/// not in an environment that reclaims such values. Thread: the interpreter thread only.
namespace orvex {

/// One sentence each, with the value and the place that made it, oldest first, since the start or the last
/// `clearScopeErrors`; at most 100.
OX_API const std::vector<std::string>& scopeErrors() noexcept;
OX_API void clearScopeErrors() noexcept;  ///< Forgets them.

}  // namespace orvex
