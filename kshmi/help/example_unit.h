#pragma once

#include <string_view>

namespace kshmi {

/// The bytes of a unit, an .fmu, whose outputs are called like the ports of the example model.
std::string_view exampleUnit() noexcept;

}  // namespace kshmi
