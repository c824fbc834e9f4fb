#pragma once

#include <string>

#include "host/hv_array.h"

namespace orvex {

/// The value as displays show it, UTF-8: a text in quotes, a scalar as it is, class and size of any other.
std::string shortText(const hvArray* value);

}  // namespace orvex
