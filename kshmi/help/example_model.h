#pragma once

#include <string_view>

namespace kshmi {

/// A model file on which the examples of the help can be tried.
std::string_view exampleModel() noexcept;

}  // namespace kshmi
