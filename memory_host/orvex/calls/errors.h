#pragma once

#include <string>

#include "host/api.h"

namespace orvex {

/// Throws `kssvIException` with that literal text (UTF-8) under the catalogue "orvex:errors".
[[noreturn]] OX_API void raise(std::string key, std::string text);

}  // namespace orvex
